#pragma once

#include "platform/SpeechRecognition.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace dorix {

class PocketsphinxWorker;

/// The recogniser for English that runs inside the program. Its decoder is loaded once, when first asked for
/// its format, and works on a thread of its own; transcriptions queue for it. Without its model on this
/// computer no language is supported. Main executor; the destructor waits for the stretch of sound being
/// decoded, a few hundredths of a second, or for a model that is being loaded. Analyzers may outlive it.
class PocketsphinxRecognition final : public SpeechRecognition {
 public:
    /// `models` is the folder with "en-us" in it.
    explicit PocketsphinxRecognition(std::filesystem::path models = defaultModelFolder());
    ~PocketsphinxRecognition() override;

    /// DORIX_POCKETSPHINX_MODELS of the environment, or else where the library's own package puts them.
    static std::filesystem::path defaultModelFolder();

    std::optional<std::string> supportedLocale(const std::string& equivalentTo) const override;
    AssetStatus assetStatus(const std::string& locale) const override;
    Task<void> downloadAndInstall(std::string locale, Progress progress) override;
    Task<std::optional<AudioFormat>> bestAvailableAudioFormat(std::string locale) override;
    std::unique_ptr<SpeechAnalyzer> makeAnalyzer(const std::string& locale) override;

 private:
    const std::filesystem::path models_;
    const std::shared_ptr<PocketsphinxWorker> worker_;
};

}  // namespace dorix
