#pragma once

#include "platform/HotKeyRegistrar.h"
#include "platform/InputEvents.h"

#include <functional>
#include <utility>
#include <vector>

namespace dorix {

/// Hot keys that the test presses.
class FakeHotKeyRegistrar final : public HotKeyRegistrar {
 public:
    void installEventHandler(Handler handler) override { handler_ = std::move(handler); }
    std::expected<Ref, Status> registerHotKey(std::uint16_t, std::uint32_t, HotKeyID) override {
        if (refuseWith != 0) return std::unexpected(refuseWith);
        return ++lastRef_;
    }
    void unregisterHotKey(Ref) override {}

    void send(std::uint32_t id, std::uint32_t kind) { handler_({0, id}, kind); }

    Status refuseWith = 0;

 private:
    Handler handler_;
    Ref lastRef_ = 0;
};

/// A keyboard that the test types on, into other applications unless it says otherwise.
class FakeKeyEventMonitors final : public KeyEventMonitors {
 public:
    Subscription addGlobalMonitor(KeyEventMask mask, GlobalHandler handler) override {
        if (refuseGlobal) return {};
        return add(mask, false, [handler = std::move(handler)](const KeyEvent& event) {
            handler(event);
            return false;
        });
    }
    Subscription addLocalMonitor(KeyEventMask mask, LocalHandler handler) override {
        return add(mask, true, std::move(handler));
    }
    bool reportsKey(std::uint16_t) const override { return true; }

    /// Whether a handler swallowed the event.
    bool send(KeyEventMask mask, KeyEvent event, bool toOwnWindow = false) {
        bool swallowed = false;
        for (const auto& weak : std::vector(monitors_)) {
            const auto monitor = weak.lock();
            if (monitor && monitor->mask == mask && monitor->local == toOwnWindow) {
                swallowed = monitor->handler(event) || swallowed;
            }
        }
        return swallowed;
    }
    bool flags(std::uint16_t keyCode, std::uint64_t flags) {
        return send(KeyEventMask::flagsChanged, {keyCode, flags});
    }
    bool keyDown(std::uint16_t keyCode, std::uint64_t flags = 0) {
        return send(KeyEventMask::keyDown, {keyCode, flags});
    }

    int installed() const {
        int count = 0;
        for (const auto& monitor : monitors_) count += monitor.expired() ? 0 : 1;
        return count;
    }

    bool refuseGlobal = false;

 private:
    struct Monitor {
        KeyEventMask mask;
        bool local;
        LocalHandler handler;
    };

    Subscription add(KeyEventMask mask, bool local, LocalHandler handler) {
        auto monitor = std::make_shared<Monitor>(Monitor{mask, local, std::move(handler)});
        monitors_.push_back(monitor);
        return Subscription(monitor);
    }

    std::vector<std::weak_ptr<Monitor>> monitors_;
};

/// Keeps what is struck; `onPost` plays the application that gets it.
class RecordingEventPoster final : public EventPoster {
 public:
    std::vector<std::uint16_t> posted;
    std::function<void(std::uint16_t)> onPost = [](std::uint16_t) {};
    bool knowsChord = true;  // the application in front does

    Task<bool> postCommandKey(std::uint16_t keyCode, Condition still) override {
        if (!knowsChord || !still()) co_return false;
        posted.push_back(keyCode);
        onPost(keyCode);
        co_return true;
    }
};

}  // namespace dorix
