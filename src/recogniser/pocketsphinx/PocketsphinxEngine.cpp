#include "recogniser/pocketsphinx/PocketsphinxEngine.h"

#include "recogniser/files/IntactFiles.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace dorix::recogniser {

namespace {
constexpr std::chrono::milliseconds progressInterval{100};

const ModelRequest& intact(const ModelRequest& model) {
    demandIntact(model.folder, model.sha256);
    return model;
}

std::int16_t pcm(float sample) {
    return static_cast<std::int16_t>(std::lround(std::clamp(sample, -1.0F, 1.0F) * 32767));
}
}  // namespace

PocketsphinxEngine::PocketsphinxEngine(const ModelRequest& model) : decoder_(intact(model)) {}

void PocketsphinxEngine::begin(Results& results) {
    results_ = &results;
    wasInSpeech_ = false;
    told_.clear();
    toldAt_ = {};
    decoder_.beginStream();
    decoder_.beginUtterance();
}

void PocketsphinxEngine::accept(std::span<const float> samples) {
    scratch_.resize(samples.size());
    std::ranges::transform(samples, scratch_.begin(), pcm);
    decoder_.process(scratch_);
    const bool isInSpeech = decoder_.isInSpeech();
    if (std::exchange(wasInSpeech_, isInSpeech) && !isInSpeech) {
        endPart();
        decoder_.beginUtterance();
    } else if (isInSpeech) {
        tellProgress();
    }
}

void PocketsphinxEngine::finish() { endPart(); }

void PocketsphinxEngine::abandon() noexcept { decoder_.abandonUtterance(); }

void PocketsphinxEngine::endPart() {
    decoder_.endUtterance();
    const auto words = decoder_.hypothesis();
    // An empty final one takes back what was told of words that turned out to be none.
    if (!words.empty() || !told_.empty()) results_->final(words);
    told_.clear();
}

void PocketsphinxEngine::tellProgress() {
    if (Clock::now() - toldAt_ < progressInterval) return;
    auto words = decoder_.hypothesis();
    if (words == told_) return;
    toldAt_ = Clock::now();
    told_ = std::move(words);
    results_->partial(told_);
}

}  // namespace dorix::recogniser
