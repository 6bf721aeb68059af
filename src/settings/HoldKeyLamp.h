#pragma once

#include "base/Observable.h"
#include "localdata/PushToTalkKey.h"
#include "platform/InputEvents.h"

#include <vector>

namespace dorix {

/// Whether a hold key is down, for the user to see that it reaches the program. Main executor.
class HoldKeyLamp {
 public:
    /// Outlives the lamp.
    explicit HoldKeyLamp(KeyEventMonitors& events) : events_(events) {}
    HoldKeyLamp(const HoldKeyLamp&) = delete;
    HoldKeyLamp& operator=(const HoldKeyLamp&) = delete;

    Observable<bool> isLit;

    /// Watches the key from now on, and no other.
    void watch(PushToTalkKey key);
    void stop();

 private:
    KeyEventMonitors& events_;
    std::vector<Subscription> monitors_;
};

}  // namespace dorix
