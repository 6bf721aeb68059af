#include "linux/pocketsphinx/UtteranceTranscriber.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace dorix {

namespace {
constexpr std::size_t sliceSamples = 1600;  // a tenth of a second: how long a drop may go unnoticed
constexpr double progressInterval = 0.1;    // seconds

std::int16_t pcm(float sample) {
    return static_cast<std::int16_t>(std::lround(std::clamp(sample, -1.0F, 1.0F) * 32767));
}
}  // namespace

UtteranceTranscriber::UtteranceTranscriber(PocketsphinxDecoder& decoder, const Executor& time,
                                           const PocketsphinxWorker::Session& session)
    : decoder_(decoder), time_(time), session_(session) {
    decoder_.beginStream();
    decoder_.beginUtterance();
}

void UtteranceTranscriber::take(std::span<const float> samples) {
    while (!samples.empty() && !session_.isDropped) {
        const auto slice = samples.first(std::min(samples.size(), sliceSamples));
        samples = samples.subspan(slice.size());
        process(slice);
    }
}

void UtteranceTranscriber::process(std::span<const float> samples) {
    scratch_.resize(samples.size());
    std::ranges::transform(samples, scratch_.begin(), pcm);
    decoder_.process(scratch_);
    const bool isInSpeech = decoder_.isInSpeech();
    if (std::exchange(wasInSpeech_, isInSpeech) && !isInSpeech) {
        endUtterance();
        decoder_.beginUtterance();
    } else if (isInSpeech) {
        tellProgress();
    }
}

void UtteranceTranscriber::finish() {
    if (!session_.isDropped) endUtterance();
}

void UtteranceTranscriber::endUtterance() {
    decoder_.endUtterance();
    auto words = decoder_.hypothesis();
    // An empty final one takes back what was told of words that turned out to be none.
    if (!words.empty() || !told_.empty()) session_.results.push({std::move(words), true});
    told_.clear();
}

void UtteranceTranscriber::tellProgress() {
    if (time_.now() - toldAt_ < progressInterval) return;
    auto words = decoder_.hypothesis();
    if (words == told_) return;
    toldAt_ = time_.now();
    told_ = words;
    session_.results.push({std::move(words), false});
}

}  // namespace dorix
