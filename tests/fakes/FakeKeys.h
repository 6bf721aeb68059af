#pragma once

#include "base/Observable.h"
#include "base/async/Executor.h"
#include "platform/HotKeyRegistrar.h"
#include "platform/InputEvents.h"

#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

namespace dorix {

/// Hot keys that the test presses.
class FakeHotKeyRegistrar final : public HotKeyRegistrar {
 public:
    explicit FakeHotKeyRegistrar(const Executor& executor) : executor_(executor) {}

    void installEventHandler(Handler handler) override { handler_ = std::move(handler); }
    std::expected<Ref, Status> registerHotKey(std::uint16_t, std::uint32_t, HotKeyID) override {
        if (refuseWith != 0) return std::unexpected(refuseWith);
        return ++lastRef_;
    }
    bool isDelivered(Ref) override { return refuseWith == 0; }
    void unregisterHotKey(Ref) override {}

    /// It happened so many seconds ago.
    void send(std::uint32_t id, std::uint32_t kind, double ago = 0) {
        handler_({0, id}, kind, executor_.now() - ago);
    }

    Status refuseWith = 0;

 private:
    const Executor& executor_;
    Handler handler_;
    Ref lastRef_ = 0;
};

/// A keyboard that the test types on, into other applications unless it says otherwise.
class FakeKeyEventMonitors final : public KeyEventMonitors {
 public:
    explicit FakeKeyEventMonitors(const Executor& executor) : executor_(executor) {}

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
    bool reportsKey(std::uint16_t) const override { return hasHoldKey; }
    bool typesCharacters(std::uint16_t) const override { return holdKeyIsAltGr; }
    Subscription onKeyboardChange(std::function<void()> callback) override {
        return changed_.add(std::move(callback));
    }
    /// Another keyboard, or another layout.
    void change() { changed_.notify(); }
    void keepMenuShut() override {}
    Subscription withhold(std::uint16_t keyCode) override {
        auto token = std::make_shared<std::uint16_t>(keyCode);
        withheld_ = token;
        return Subscription(token);
    }

    /// Whether a handler swallowed the event, which happens now.
    bool send(KeyEventMask mask, KeyEvent event, bool toOwnWindow = false) {
        event.time = executor_.now() - toldLate;
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

    /// The key that only the monitors get.
    std::optional<std::uint16_t> withheld() const {
        const auto token = withheld_.lock();
        return token ? std::optional(*token) : std::nullopt;
    }

    bool refuseGlobal = false;
    bool hasHoldKey = true;
    bool holdKeyIsAltGr = false;
    double toldLate = 0;  // seconds that an event waits before it is sent

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

    const Executor& executor_;
    std::vector<std::weak_ptr<Monitor>> monitors_;
    std::weak_ptr<std::uint16_t> withheld_;
    Observers<> changed_;
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
