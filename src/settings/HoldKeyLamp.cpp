#include "settings/HoldKeyLamp.h"

#include "dictation/WatchedKey.h"

namespace dorix {

void HoldKeyLamp::watch(PushToTalkKey key) {
    stop();
    const auto follow = [this, key = watched(key)](const KeyEvent& event) {
        if (event.keyCode == key.keyCode) isLit.set((event.modifierFlags & key.flag) != 0);
    };
    monitors_.push_back(events_.addGlobalMonitor(KeyEventMask::flagsChanged, follow));
    monitors_.push_back(events_.addLocalMonitor(KeyEventMask::flagsChanged, [follow](const KeyEvent& event) {
        follow(event);
        return false;
    }));
}

void HoldKeyLamp::stop() {
    monitors_.clear();
    isLit.set(false);
}

}  // namespace dorix
