#include "dictation/PushToTalkMonitor.h"

#include "base/Log.h"
#include "platform/KeyCodes.h"

#include <utility>

namespace dorix {

namespace {

struct WatchedKey {
    std::uint16_t keyCode;
    /// The device-side bit, so that the key's left-hand twin never counts.
    std::uint64_t flag;
    /// Modifiers that make the press an ordinary chord.
    std::uint64_t veto;
};

constexpr WatchedKey watched(PushToTalkKey key) {
    using namespace modifier;
    switch (key) {
        case PushToTalkKey::rightOption:
            return {keycode::rightOption, deviceRightOption, shift | control | command};
        case PushToTalkKey::rightCommand:
            return {keycode::rightCommand, deviceRightCommand, shift | control | option};
        case PushToTalkKey::rightControl:
            return {keycode::rightControl, deviceRightControl, shift | option | command};
        case PushToTalkKey::fn:
            return {keycode::function, function, shift | control | option | command};
    }
    std::unreachable();
}

}  // namespace

PushToTalkMonitor::PushToTalkMonitor(Executor& executor, KeyEventMonitors& events, PushToTalkKey watchedKey)
    : key(watchedKey), events_(events), confirmWork_(executor) {}

void PushToTalkMonitor::start() {
    stop();
    if (!events_.reportsKey(watched(key).keyCode))
        logLine("el teclado no tiene la tecla elegida para dictar");
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
    if (!isEnabled) return;
    if (event.keyCode == watched(key).keyCode) {
        holdKeyChanged(event.modifierFlags);
    } else if (phase_ == Phase::armed) {
        cancel();
    }
}

void PushToTalkMonitor::holdKeyChanged(std::uint64_t modifierFlags) {
    if ((modifierFlags & watched(key).flag) != 0) {
        if (phase_ == Phase::idle && (modifierFlags & watched(key).veto) == 0) arm();
        return;
    }
    switch (phase_) {
        case Phase::idle:
            return;
        case Phase::armed:
            return cancel();
        case Phase::active:
            reset();
            return onEnd();
    }
}

bool PushToTalkMonitor::keyDown(const KeyEvent& event) {
    const bool escape = event.keyCode == keycode::escape;
    switch (phase_) {
        case Phase::idle:
            return escape && onEscape();
        case Phase::armed:
            cancel();
            return false;
        case Phase::active:
            if (escape) cancel();
            return escape;
    }
    std::unreachable();
}

void PushToTalkMonitor::arm() {
    phase_ = Phase::armed;
    confirmWork_.once(holdThreshold, [this] {
        if (phase_ != Phase::armed) return;
        phase_ = Phase::active;
        onConfirm();
    });
    onBegin();
}

void PushToTalkMonitor::cancel() {
    reset();
    onCancel();
}

}  // namespace dorix
