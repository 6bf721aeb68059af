#pragma once

#include "base/async/Completion.h"
#include "platform/SpeechRecognition.h"

#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

/// A recogniser that says what a test tells it to say.
class FakeSpeechRecognition final : public SpeechRecognition {
 public:
    /// One analyzer, as the test sees it; it outlives the analyzer.
    struct Transcription {
        std::string locale;
        std::optional<AsyncStream<AnalyzerInput>> input;  // there once it was started
        AsyncStream<TranscriptionResult> results;
        Completion<void> finalized;
        bool finishCalled = false;

        void say(std::string text) const { results.push({std::move(text), false}); }
        void sayFinal(std::string text) const { results.push({std::move(text), true}); }
        /// Ends the results and lets the flush return.
        void end() const {
            results.finish();
            finalized.complete();
        }
    };
    enum class AtFinish { end, stayOpen };

    std::optional<std::string> supportedLocale(const std::string& equivalentTo) const override;
    AssetStatus assetStatus(const std::string& locale) const override;
    Task<void> downloadAndInstall(std::string locale, Progress progress) override;
    Task<std::optional<AudioFormat>> bestAvailableAudioFormat(std::string locale) override;
    std::unique_ptr<SpeechAnalyzer> makeAnalyzer(const std::string& locale) override;

    /// The newest transcription.
    Transcription& current() const { return *transcriptions.back(); }

    std::map<std::string, std::string> locales{{"en", "en-US"}, {"es", "es-ES"}};
    AssetStatus status = AssetStatus::installed;
    std::optional<AudioFormat> format = AudioFormat{16000, 1};
    std::exception_ptr startError;
    AtFinish atFinish = AtFinish::end;  // whether results end by themselves when the input has

    /// Set to hold installation or the format back until the test completes it.
    std::optional<Completion<void>> installGate;
    std::optional<Completion<void>> formatGate;
    Progress progress;  // of the installation under way

    std::vector<std::shared_ptr<Transcription>> transcriptions;
};

}  // namespace dorix
