#include "fakes/FakeSpeechRecognition.h"

#include <utility>

namespace dorix {

namespace {
class FakeAnalyzer final : public SpeechAnalyzer {
 public:
    FakeAnalyzer(std::shared_ptr<FakeSpeechRecognition::Transcription> transcription,
                 std::exception_ptr startError, FakeSpeechRecognition::AtFinish atFinish)
        : transcription_(std::move(transcription)),
          // NOLINTNEXTLINE(bugprone-throw-keyword-missing): kept until start
          startError_(std::move(startError)),
          atFinish_(atFinish) {}

    Task<void> start(AsyncStream<AnalyzerInput> input) override {
        if (startError_) std::rethrow_exception(startError_);
        transcription_->input = input;
        co_return;
    }
    AsyncStream<TranscriptionResult> results() override { return transcription_->results; }
    Task<void> finalizeAndFinishThroughEndOfInput() override {
        transcription_->finishCalled = true;
        if (atFinish_ == FakeSpeechRecognition::AtFinish::end) transcription_->end();
        const auto finalized = transcription_->finalized;
        co_await finalized;
    }

 private:
    const std::shared_ptr<FakeSpeechRecognition::Transcription> transcription_;
    const std::exception_ptr startError_;
    const FakeSpeechRecognition::AtFinish atFinish_;
};
}  // namespace

std::optional<std::string> FakeSpeechRecognition::supportedLocale(const std::string& equivalentTo) const {
    const auto locale = locales.find(equivalentTo);
    if (locale == locales.end()) return std::nullopt;
    return locale->second;
}

SpeechRecognition::AssetStatus FakeSpeechRecognition::assetStatus(const std::string&) const { return status; }

Task<void> FakeSpeechRecognition::downloadAndInstall(std::string, Progress newProgress) {
    progress = std::move(newProgress);
    if (installGate) co_await *installGate;
    status = AssetStatus::installed;
}

Task<std::optional<AudioFormat>> FakeSpeechRecognition::bestAvailableAudioFormat(std::string) {
    if (formatGate) co_await *formatGate;
    co_return format;
}

std::unique_ptr<SpeechAnalyzer> FakeSpeechRecognition::makeAnalyzer(const std::string& locale) {
    auto transcription = std::make_shared<Transcription>();
    transcription->locale = locale;
    transcriptions.push_back(transcription);
    return std::make_unique<FakeAnalyzer>(transcription, startError, atFinish);
}

}  // namespace dorix
