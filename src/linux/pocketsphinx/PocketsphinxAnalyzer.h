#pragma once

#include "linux/pocketsphinx/PocketsphinxWorker.h"
#include "platform/SpeechRecognition.h"

#include <memory>
#include <optional>

namespace dorix {

/// One transcription by the worker's decoder; it waits there for its turn while others are under way. A
/// decoder that cannot be loaded or fails ends the results with a MessageError.
class PocketsphinxAnalyzer final : public SpeechAnalyzer {
 public:
    explicit PocketsphinxAnalyzer(std::shared_ptr<PocketsphinxWorker> worker);
    ~PocketsphinxAnalyzer() override;

    Task<void> start(AsyncStream<AnalyzerInput> input) override;
    AsyncStream<TranscriptionResult> results() override { return session_->results; }
    Task<void> finalizeAndFinishThroughEndOfInput() override;

 private:
    const std::shared_ptr<PocketsphinxWorker> worker_;
    const std::shared_ptr<PocketsphinxWorker::Session> session_ =
        std::make_shared<PocketsphinxWorker::Session>();
    std::optional<AsyncStream<AnalyzerInput>> input_;
};

}  // namespace dorix
