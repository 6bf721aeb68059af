#pragma once

#include "base/async/AsyncStream.h"
#include "base/async/Completion.h"
#include "base/async/SerialExecutor.h"
#include "base/async/TaskScope.h"
#include "linux/pocketsphinx/PocketsphinxDecoder.h"
#include "platform/SpeechRecognition.h"

#include <atomic>
#include <filesystem>
#include <memory>
#include <optional>

namespace dorix {

/// The decoder's thread. It outlives everybody who holds it; the last to let go is not on that thread, and
/// waits for the work under way.
class PocketsphinxWorker {
 public:
    /// One transcription, shared by the analyzer and the thread.
    struct Session {
        AsyncStream<TranscriptionResult> results;
        Completion<void> finished;            // after `results` has ended
        std::atomic<bool> isDropped = false;  // nobody wants the words any more
    };

    explicit PocketsphinxWorker(std::filesystem::path models);
    ~PocketsphinxWorker();
    PocketsphinxWorker(const PocketsphinxWorker&) = delete;
    PocketsphinxWorker& operator=(const PocketsphinxWorker&) = delete;

    SerialExecutor& executor() { return executor_; }

    /// Any thread.
    bool isLoaded() const { return isLoaded_; }

    /// The decoder, loaded when it is not. The worker's thread. Throws MessageError, each time anew.
    PocketsphinxDecoder& decoder();

    /// Transcribes `input` until its end, when the sessions before are through. Any thread; returns at once.
    void transcribe(std::shared_ptr<Session> session, AsyncStream<AnalyzerInput> input);

 private:
    Task<void> run(std::shared_ptr<Session> session, AsyncStream<AnalyzerInput> input,
                   std::optional<Completion<void>> before);
    Task<void> decode(std::shared_ptr<Session> session, AsyncStream<AnalyzerInput> input);

    const std::filesystem::path models_;
    std::atomic<bool> isLoaded_ = false;

    // The worker's thread:
    std::unique_ptr<PocketsphinxDecoder> decoder_;
    std::optional<Completion<void>> newest_;  // the end of the session begun last
    std::optional<TaskScope> sessions_;

    SerialExecutor executor_;  // last: its thread is gone before what it works on
};

}  // namespace dorix
