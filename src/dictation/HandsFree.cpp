#include "dictation/HandsFree.h"

#include "dictation/AppState.h"
#include "dictation/HeardVoice.h"
#include "speech/SpeechInput.h"

#include <utility>

namespace dorix {

namespace {
constexpr double interval = 0.15;  // seconds, as all of these
constexpr double silenceBeforeWords = 8.0;
constexpr double silenceAfterWords = 1.8;
constexpr double longest = 120.0;
}  // namespace

HandsFree::HandsFree(Executor& executor, AppState& state, SpeechInput& speech, Calls calls)
    : executor_(executor), state_(state), speech_(speech), calls_(std::move(calls)), timer_(executor) {}

void HandsFree::start() {
    state_.handsFree.set(true);
    partial_.clear();
    lastChange_ = start_ = executor_.now();
    timer_.repeat(interval, [this] { watch(); });
}

void HandsFree::end() {
    timer_.stop();
    state_.handsFree.set(false);
}

void HandsFree::watch() {
    if (!state_.handsFree.get()) return;
    const double now = executor_.now();
    // As long as no words can come, their absence is no silence.
    if (speech_.isBehind()) start_ = lastChange_ = now;
    if (speech_.partial.get() != partial_) {
        partial_ = speech_.partial.get();
        lastChange_ = now;
    }
    if (speech_.level.get() > audibleLevel) lastChange_ = now;
    if (partial_.empty()) {
        if (isMoreThan(now - start_, silenceBeforeWords)) calls_.nothingHeard();
    } else if (isMoreThan(now - lastChange_, silenceAfterWords) || isMoreThan(now - start_, longest)) {
        calls_.finished();
    }
}

}  // namespace dorix
