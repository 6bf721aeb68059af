#include "linux/pocketsphinx/PocketsphinxAnalyzer.h"

#include <utility>

namespace dorix {

PocketsphinxAnalyzer::PocketsphinxAnalyzer(std::shared_ptr<PocketsphinxWorker> worker)
    : worker_(std::move(worker)) {}

PocketsphinxAnalyzer::~PocketsphinxAnalyzer() {
    session_->isDropped = true;
    // Wakes the worker when it waits for more sound.
    if (input_) input_->finish();
}

Task<void> PocketsphinxAnalyzer::start(AsyncStream<AnalyzerInput> input) {
    input_ = input;
    worker_->transcribe(session_, std::move(input));
    co_return;
}

Task<void> PocketsphinxAnalyzer::finalizeAndFinishThroughEndOfInput() {
    if (!input_) session_->results.finish();
    if (!input_) co_return;
    const auto finished = session_->finished;
    co_await finished;
}

}  // namespace dorix
