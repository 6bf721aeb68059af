#pragma once

#include "platform/MouseEventMonitors.h"

#include <utility>

namespace dorix {

/// A mouse that the test clicks with in other applications. It holds one monitor at a time.
class FakeMouseEventMonitors final : public MouseEventMonitors {
 public:
    Token addGlobalMonitor(GlobalHandler handler) override {
        auto monitor = std::make_shared<GlobalHandler>(std::move(handler));
        monitor_ = monitor;
        return monitor;
    }

    bool isMonitored() const { return !monitor_.expired(); }
    void click() {
        if (const auto monitor = monitor_.lock()) (*monitor)();
    }

 private:
    std::weak_ptr<GlobalHandler> monitor_;
};

}  // namespace dorix
