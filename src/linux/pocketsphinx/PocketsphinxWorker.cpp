#include "linux/pocketsphinx/PocketsphinxWorker.h"

#include "linux/pocketsphinx/UtteranceTranscriber.h"

#include <exception>
#include <utility>

namespace dorix {

PocketsphinxWorker::PocketsphinxWorker(std::filesystem::path models) : models_(std::move(models)) {}

PocketsphinxWorker::~PocketsphinxWorker() {
    // Waits in sessions belong to the thread, which is joined after this has run.
    executor_.post([this] { sessions_.reset(); });
}

PocketsphinxDecoder& PocketsphinxWorker::decoder() {
    if (!decoder_) decoder_ = std::make_unique<PocketsphinxDecoder>(models_);
    isLoaded_ = true;
    return *decoder_;
}

void PocketsphinxWorker::transcribe(std::shared_ptr<Session> session, AsyncStream<AnalyzerInput> input) {
    executor_.post([this, session = std::move(session), input = std::move(input)]() mutable {
        if (!sessions_) sessions_.emplace(executor_);
        const auto before = std::exchange(newest_, session->finished);
        sessions_->spawn(run(std::move(session), std::move(input), before));
    });
}

Task<void> PocketsphinxWorker::run(std::shared_ptr<Session> session, AsyncStream<AnalyzerInput> input,
                                   std::optional<Completion<void>> before) {
    if (before) co_await *before;
    std::exception_ptr failure;
    try {
        co_await decode(session, std::move(input));
    } catch (...) {
        failure = std::current_exception();
    }
    if (decoder_) decoder_->abandonUtterance();
    session->results.finish(failure);
    session->finished.complete();
}

Task<void> PocketsphinxWorker::decode(std::shared_ptr<Session> session, AsyncStream<AnalyzerInput> input) {
    UtteranceTranscriber transcriber(decoder(), executor_, *session);
    while (const auto heard = co_await input.next()) {
        // A dropped session's input has ended too: what is left of it passes by.
        transcriber.take(heard->samples);
    }
    transcriber.finish();
}

}  // namespace dorix
