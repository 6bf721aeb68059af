#pragma once

#include "base/async/Executor.h"
#include "linux/pocketsphinx/PocketsphinxDecoder.h"
#include "linux/pocketsphinx/PocketsphinxWorker.h"

#include <cstdint>
#include <limits>
#include <span>
#include <string>
#include <vector>

namespace dorix {

/// Puts a running sound through the decoder: cuts it into utterances at the pauses, each of which gives one
/// final result, and tells what it understands meanwhile, ten times a second at most. The worker's thread.
/// Throws what the decoder throws.
class UtteranceTranscriber {
 public:
    /// All outlive the transcriber.
    UtteranceTranscriber(PocketsphinxDecoder& decoder, const Executor& time,
                         const PocketsphinxWorker::Session& session);

    /// Returns early, with the sound lost, when the session is dropped.
    void take(std::span<const float> samples);

    /// The last words.
    void finish();

 private:
    void process(std::span<const float> samples);
    void endUtterance();
    void tellProgress();

    PocketsphinxDecoder& decoder_;
    const Executor& time_;
    const PocketsphinxWorker::Session& session_;
    std::vector<std::int16_t> scratch_;
    bool wasInSpeech_ = false;
    std::string told_;
    double toldAt_ = -std::numeric_limits<double>::infinity();
};

}  // namespace dorix
