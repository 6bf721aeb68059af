#include "dictation/HUDFlash.h"

#include "base/async/Executor.h"
#include "localdata/Language.h"

#include <utility>

namespace dorix {

namespace {
bool isError(const HUDPhase& phase) { return phase.kind == HUDPhase::Kind::error; }
}  // namespace

void HUDFlash::flash(const HUDPhase& phase, double seconds, Sticky sticky) {
    if (!isListening_) return present(phase, seconds, sticky);
    // What went wrong is not to be missed for something that went well.
    if (waiting_ && isError(waiting_->phase) && !isError(phase)) return;
    waiting_ = Message{phase, seconds, sticky, executor_.now()};
}

void HUDFlash::flashNoSound() {
    flash(
        HUDPhase::error(tr("No me llega sonido del micrófono. Si acabas de conectar unos auriculares, prueba "
                           "otra vez.")),
        4.0);
}

void HUDFlash::present(const HUDPhase& phase, double seconds, Sticky sticky) {
    hideWork_.stop();
    state_.hud.set(phase);
    if (sticky == Sticky::yes) return;
    hideWork_.once(seconds, [this, phase] {
        if (state_.hud.get() == phase) state_.hud.set(background());
    });
}

void HUDFlash::showListening(bool asking) {
    hideWork_.stop();
    isListening_ = true;
    state_.asking.set(asking);
    state_.hud.set(HUDPhase::listening());
}

void HUDFlash::hideListening() {
    if (!std::exchange(isListening_, false)) return;
    if (!presentWaiting()) state_.hud.set(background());
}

void HUDFlash::showProcessing() {
    isListening_ = false;
    isProcessing_ = true;
    if (presentWaiting()) return;
    hideWork_.stop();
    state_.hud.set(background());
}

void HUDFlash::setProcessing(bool processing) {
    isProcessing_ = processing;
    const auto kind = state_.hud.get().kind;
    if (kind == HUDPhase::Kind::processing || kind == HUDPhase::Kind::hidden) state_.hud.set(background());
}

void HUDFlash::setAsking() {
    if (!isListening_) state_.asking.set(true);
}

/// False when nothing waits, or nothing that is still worth showing.
bool HUDFlash::presentWaiting() {
    const auto message = std::exchange(waiting_, std::nullopt);
    if (!message) return false;
    const bool stays = isError(message->phase) || message->sticky == Sticky::yes;
    const double left = stays ? message->seconds : message->since + message->seconds - executor_.now();
    if (left <= 0) return false;
    present(message->phase, left, message->sticky);
    return true;
}

HUDPhase HUDFlash::background() const { return isProcessing_ ? HUDPhase::processing() : HUDPhase::hidden(); }

}  // namespace dorix
