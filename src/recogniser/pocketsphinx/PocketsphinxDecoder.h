#pragma once

#include "recognition/ModelRequest.h"

#include <cstdint>
#include <memory>
#include <span>
#include <string>

// The library's own names for what its decoder and its options are.
struct ps_decoder_s;
struct cmd_ln_s;

namespace dorix::recogniser {

/// The decoder with its model, as one utterance after another is put through it. One thread at a time; calls
/// take as long as the decoding takes. Throws MessageError where the library fails.
class PocketsphinxDecoder {
 public:
    /// Loads the model, which takes some tenths of a second. Its parameters are the library's options that
    /// say how it searches, without their dash; others are refused.
    explicit PocketsphinxDecoder(const ModelRequest& model);
    ~PocketsphinxDecoder();

    /// What was learnt of the noise in the sound before does not hold any more.
    void beginStream();

    void beginUtterance();
    void process(std::span<const std::int16_t> samples);

    /// Whether the sound processed last was speech; false again after half a second's pause.
    bool isInSpeech() const;

    /// Goes through the utterance once more; afterwards hypothesis gives its final words.
    void endUtterance();

    /// Ends an utterance that a failure or its owner's loss of interest left open.
    void abandonUtterance() noexcept;

    /// The words understood so far in this utterance, in lower case, without noises.
    std::string hypothesis() const;

 private:
    struct Free {
        void operator()(ps_decoder_s* decoder) const;
        void operator()(cmd_ln_s* options) const;
    };

    std::unique_ptr<cmd_ln_s, Free> options_;
    std::unique_ptr<ps_decoder_s, Free> decoder_;
    bool isUtteranceOpen_ = false;
};

}  // namespace dorix::recogniser
