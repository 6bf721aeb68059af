#pragma once

#include "recogniser/Engine.h"
#include "recogniser/pocketsphinx/PocketsphinxDecoder.h"
#include "recognition/ModelRequest.h"

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace dorix::recogniser {

/// The recogniser with small models: puts a running sound through the decoder and cuts it at the pauses, each
/// of which gives one final text. Tells what it understands meanwhile ten times a second at most. Throws what
/// the decoder throws.
class PocketsphinxEngine final : public Engine {
 public:
    /// Loads the model, which takes some tenths of a second; one whose files are not what they should be is
    /// refused.
    explicit PocketsphinxEngine(const ModelRequest& model);

    void begin(Results& results) override;
    void accept(std::span<const float> samples) override;
    void finish() override;
    void abandon() noexcept override;

 private:
    using Clock = std::chrono::steady_clock;

    void endPart();
    void tellProgress();

    PocketsphinxDecoder decoder_;
    Results* results_ = nullptr;
    std::vector<std::int16_t> scratch_;
    bool wasInSpeech_ = false;
    std::string told_;
    Clock::time_point toldAt_;
};

}  // namespace dorix::recogniser
