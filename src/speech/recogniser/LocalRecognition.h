#pragma once

#include "platform/SpeechRecognition.h"
#include "recognition/ModelRequest.h"
#include "speech/recogniser/Recogniser.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace dorix {

/// Recognition by models on this computer, or by a server that the user chose, in a process of its own. The
/// locale that serves a language is the language of its model. Main executor. Analyzers may outlive it.
class LocalRecognition final : public SpeechRecognition {
 public:
    /// The model that is to serve a language; none when none can.
    using ChooseModel = std::function<std::optional<ModelRequest>(const std::string& language)>;

    /// Both must outlive it. `otherwise` chooses what takes the place of one that failed, if it chooses
    /// another; none does without it.
    LocalRecognition(Executor& main, HelperProcesses& processes, ChooseModel chooseModel,
                     ChooseModel otherwise = nullptr);
    ~LocalRecognition() override;

    /// Looks for the model anew.
    std::optional<std::string> supportedLocale(const std::string& equivalentTo) const override;
    AssetStatus assetStatus(const std::string& locale) const override;
    Task<void> downloadAndInstall(std::string locale, Progress progress) override;
    Task<std::optional<AudioFormat>> bestAvailableAudioFormat(std::string locale) override;
    std::optional<AudioFormat> knownFormat(const std::string& locale) const override;
    std::unique_ptr<SpeechAnalyzer> makeAnalyzer(const std::string& locale) override;

    /// `callback` is told of a model that cannot be loaded, and will not be at another try.
    void onRefused(std::function<void(const ModelRequest&)> callback) {
        recogniser_->onRefused = std::move(callback);
    }

    /// `callback` is told of a server that failed on an utterance, and why, for the user to read.
    void onServerFailed(std::function<void(const std::string& why)> callback) {
        recogniser_->onServerFailed = std::move(callback);
    }

    /// Lets go of the model in that folder, as its files are about to change.
    void letGo(const std::filesystem::path& folder) { recogniser_->letGo(folder); }

 private:
    std::optional<ModelRequest> chosen(const std::string& locale) const;

    Executor& main_;
    const ChooseModel chooseModel_;
    mutable std::map<std::string, ModelRequest> chosen_;  // by locale
    const std::shared_ptr<Recogniser> recogniser_;
};

}  // namespace dorix
