#pragma once

#include "base/async/Completion.h"
#include "platform/SpeechRecognition.h"

#include <exception>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

/// A recogniser that says what a test tells it to say.
class FakeSpeechRecognition final : public SpeechRecognition {
 public:
    enum class AtFinish { end, stayOpen };

    /// One analyzer, as the test sees it; it outlives the analyzer.
    struct Transcription {
        std::string locale;
        std::exception_ptr startError;
        AtFinish atFinish;
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

    std::optional<std::string> supportedLocale(const std::string& equivalentTo) const override {
        const auto locale = locales.find(equivalentTo);
        return locale == locales.end() ? std::nullopt : std::optional(locale->second);
    }
    AssetStatus assetStatus(const std::string&) const override { return status; }
    Task<void> downloadAndInstall(std::string, Progress newProgress) override {
        progress = std::move(newProgress);
        if (installGate) co_await *installGate;
        status = AssetStatus::installed;
    }
    Task<std::optional<AudioFormat>> bestAvailableAudioFormat(std::string) override {
        if (formatGate) co_await *formatGate;
        co_return format;
    }
    std::unique_ptr<SpeechAnalyzer> makeAnalyzer(const std::string& locale) override {
        transcriptions.push_back(
            std::make_shared<Transcription>(locale, std::exchange(startError, nullptr), atFinish));
        return std::make_unique<Analyzer>(transcriptions.back());
    }

    /// The newest transcription.
    Transcription& current() const { return *transcriptions.back(); }

    std::map<std::string, std::string> locales{{"en", "en-US"}, {"es", "es-ES"}};
    AssetStatus status = AssetStatus::installed;
    std::optional<AudioFormat> format = AudioFormat{16000, 1};
    std::exception_ptr startError;      // of the next analyzer
    AtFinish atFinish = AtFinish::end;  // whether results end by themselves when the input has

    /// Set to hold installation or the format back until the test completes it.
    std::optional<Completion<void>> installGate;
    std::optional<Completion<void>> formatGate;
    Progress progress;  // of the installation under way

    std::vector<std::shared_ptr<Transcription>> transcriptions;

 private:
    struct Analyzer final : SpeechAnalyzer {
        explicit Analyzer(std::shared_ptr<Transcription> of) : transcription(std::move(of)) {}

        Task<void> start(AsyncStream<AnalyzerInput> input) override {
            if (transcription->startError) std::rethrow_exception(transcription->startError);
            transcription->input = input;
            co_return;
        }
        AsyncStream<TranscriptionResult> results() override { return transcription->results; }
        Task<void> finalizeAndFinishThroughEndOfInput() override {
            transcription->finishCalled = true;
            if (transcription->atFinish == AtFinish::end) transcription->end();
            const auto finalized = transcription->finalized;
            co_await finalized;
        }

        const std::shared_ptr<Transcription> transcription;
    };
};

}  // namespace dorix
