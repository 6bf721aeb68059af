#pragma once

#include "base/async/Timer.h"
#include "localdata/PushToTalkKey.h"
#include "platform/InputEvents.h"

#include <functional>
#include <vector>

namespace dorix {

/// Watches one modifier key that the user holds to talk, and tells a hold from a tap and from an ordinary
/// chord: by when the keys were struck, however late that is told. It types nothing and never swallows the
/// key itself. Main executor.
class PushToTalkMonitor {
 public:
    /// `armed` while the key is down but may still be a tap or part of a chord; `active` once it is a hold.
    enum class Phase { idle, armed, active };

    /// How long, in seconds, the key must stay down before the hold counts.
    static constexpr double holdThreshold = 0.3;

    /// Both references must outlive the monitor.
    PushToTalkMonitor(Executor& executor, KeyEventMonitors& events, PushToTalkKey key);
    PushToTalkMonitor(const PushToTalkMonitor&) = delete;
    PushToTalkMonitor& operator=(const PushToTalkMonitor&) = delete;

    /// Installs the event monitors anew. Safe to call repeatedly; one that the system refuses is done
    /// without.
    void start();
    /// Removes them and resets the phase, silently.
    void stop();
    /// Back to idle, silently. Whoever takes over from a press calls onCancel after it.
    void reset();

    Phase phase() const { return phase_; }

    PushToTalkKey key;
    /// While it is not, the key does nothing.
    bool isEnabled = true;

    // Each is called with the phase already changed.
    std::function<void()> onBegin = [] {};
    std::function<void()> onConfirm = [] {};
    std::function<void()> onEnd = [] {};
    std::function<void()> onCancel = [] {};
    /// The key has been held although it is not enabled.
    std::function<void()> onHeldInVain = [] {};
    /// Esc while idle; true means that it was used.
    std::function<bool()> onEscape = [] { return false; };
    /// Asked when another key goes down in a hold of a key that types characters with others (AltGr): whether
    /// the user has begun to talk, so that it is no chord.
    std::function<bool()> hasSpoken = [] { return true; };

 private:
    void flagsChanged(const KeyEvent& event);
    bool keyDown(const KeyEvent& event);
    void watchInVain(const KeyEvent& event);
    void holdKeyChanged(const KeyEvent& event);
    void arm(const KeyEvent& event);
    void confirm();
    void end();
    void cancel();
    bool isHold(const KeyEvent& event) const;
    bool isChord() const;

    Executor& executor_;
    KeyEventMonitors& events_;
    Phase phase_ = Phase::idle;
    double pressedAt_ = 0;
    Timer confirmWork_;
    std::vector<Subscription> monitors_;
};

}  // namespace dorix
