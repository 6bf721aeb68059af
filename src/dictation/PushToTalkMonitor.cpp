#include "dictation/PushToTalkMonitor.h"

#include "base/Log.h"
#include "dictation/WatchedKey.h"

namespace dorix {

PushToTalkMonitor::PushToTalkMonitor(Executor& executor, KeyEventMonitors& events, PushToTalkKey watchedKey)
    : key(watchedKey), executor_(executor), events_(events), confirmWork_(executor) {}

void PushToTalkMonitor::start() {
    stop();
    if (!events_.reportsKey(watched(key).keyCode))
        logLine("the keyboard lacks the key that was chosen for dictating");
    const auto install = [this](Subscription token) {
        if (token) monitors_.push_back(std::move(token));
    };
    install(events_.addGlobalMonitor(KeyEventMask::flagsChanged,
                                     [this](const auto& event) { flagsChanged(event); }));
    install(events_.addGlobalMonitor(KeyEventMask::keyDown, [this](const auto& event) { keyDown(event); }));
    install(events_.addLocalMonitor(KeyEventMask::flagsChanged, [this](const auto& event) {
        flagsChanged(event);
        return false;
    }));
    install(
        events_.addLocalMonitor(KeyEventMask::keyDown, [this](const auto& event) { return keyDown(event); }));
}

void PushToTalkMonitor::stop() {
    monitors_.clear();
    reset();
}

void PushToTalkMonitor::reset() {
    confirmWork_.stop();
    phase_ = Phase::idle;
}

void PushToTalkMonitor::flagsChanged(const KeyEvent& event) {
    if (!isEnabled) return watchInVain(event);
    if (event.keyCode == watched(key).keyCode) {
        holdKeyChanged(event);
    } else if (phase_ != Phase::idle && !isHold(event)) {
        cancel();
    }
}

/// Once a press, and never for a tap or a chord.
void PushToTalkMonitor::watchInVain(const KeyEvent& event) {
    confirmWork_.stop();
    const auto& hold = watched(key);
    const bool isPress = event.keyCode == hold.keyCode && (event.modifierFlags & hold.flag) != 0;
    if (!isPress || (event.modifierFlags & hold.veto) != 0) return;
    confirmWork_.once(event.time + holdThreshold - executor_.now(), [this] { onHeldInVain(); });
}

void PushToTalkMonitor::holdKeyChanged(const KeyEvent& event) {
    if ((event.modifierFlags & watched(key).flag) != 0) {
        if (phase_ == Phase::idle && (event.modifierFlags & watched(key).veto) == 0) arm(event);
        return;
    }
    if (phase_ == Phase::idle) return;
    if (isHold(event)) {
        end();
    } else {
        cancel();
    }
}

bool PushToTalkMonitor::keyDown(const KeyEvent& event) {
    const bool escape = event.keyCode == keycode::escape;
    if (!isEnabled) confirmWork_.stop();
    if (phase_ == Phase::idle) return escape && onEscape();
    const bool hold = isHold(event);
    if (!hold || escape || isChord()) cancel();
    return hold && escape;
}

/// Whether the hold key has been down for long enough by the time of the event. What confirms it runs late
/// when the executor is busy, and early when the event is told late.
bool PushToTalkMonitor::isHold(const KeyEvent& event) const {
    constexpr double clockRounding = 1e-6;
    return event.time - pressedAt_ > holdThreshold - clockRounding;
}

/// Whoever types a character with AltGr may well take a while to find its other key.
bool PushToTalkMonitor::isChord() const {
    return events_.typesCharacters(watched(key).keyCode) && !hasSpoken();
}

void PushToTalkMonitor::arm(const KeyEvent& event) {
    phase_ = Phase::armed;
    pressedAt_ = event.time;
    events_.keepMenuShut();
    confirmWork_.once(event.time + holdThreshold - executor_.now(), [this] { confirm(); });
    onBegin();
}

void PushToTalkMonitor::confirm() {
    if (phase_ != Phase::armed) return;
    phase_ = Phase::active;
    onConfirm();
}

void PushToTalkMonitor::end() {
    confirm();
    if (phase_ != Phase::active) return;
    reset();
    onEnd();
}

void PushToTalkMonitor::cancel() {
    reset();
    onCancel();
}

}  // namespace dorix
