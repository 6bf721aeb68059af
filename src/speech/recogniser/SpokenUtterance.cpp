#include "speech/recogniser/SpokenUtterance.h"

#include "speech/Join.h"
#include "speech/recogniser/Recogniser.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {
// As much as a recogniser may fall behind before it is sent more, and how much is sent in one piece.
constexpr std::size_t window = 2UZ * Recogniser::sampleRate;
constexpr std::size_t longestText = 1UZ << 20U;  // bytes
constexpr std::size_t piece = Recogniser::sampleRate / 4;
}  // namespace

double SpokenUtterance::seconds() const {
    return static_cast<double>(sound_.size()) / Recogniser::sampleRate;
}

void SpokenUtterance::beginAttempt() {
    sent_ = heard_ = 0;
    finalText_.clear();
    partialText_.clear();
}

std::span<const float> SpokenUtterance::nextSound() {
    if (sent_ >= heard_ + window) return {};
    const auto next = std::span(sound_).subspan(sent_);
    const auto sent = next.first(std::min(next.size(), piece));
    sent_ += sent.size();
    return sent;
}

void SpokenUtterance::heard(std::uint64_t samples) {
    heard_ = std::min<std::uint64_t>(samples, sent_);
    furthest_ = std::max(furthest_, heard_);
}

void SpokenUtterance::understood(TranscriptionResult result) {
    if (result.isFinal) {
        finalText_ = join(finalText_, result.text);
        partialText_.clear();
    } else {
        partialText_ = std::move(result.text);
    }
    // One that comes from the beginning once more has less to say than what the user has seen.
    if (heard_ >= furthest_) tell();
}

bool SpokenUtterance::isTooLong() const { return finalText_.size() + partialText_.size() > longestText; }

// Nothing is final before the end, as a recogniser that hears it once more may cut it elsewhere.
void SpokenUtterance::tell() { results_.push({join(finalText_, partialText_), false}); }

void SpokenUtterance::done() {
    results_.push({join(finalText_, partialText_), true});
    results_.finish();
    finished_.complete();
}

void SpokenUtterance::takeModel(ModelRequest model) {
    model_ = std::move(model);
    failures_ = 0;
}

void SpokenUtterance::fail(std::exception_ptr error) {
    results_.finish(std::move(error));
    finished_.complete();
}

}  // namespace dorix
