#include "memory/indexing/Pace.h"

#include "base/async/Sleep.h"

namespace dorix {

namespace {
constexpr double lowBattery = 0.2;
/// The kernel tells of batteries to those who ask; this is asked only while there is work to be done.
constexpr double betweenLooks = 60;  // seconds
}  // namespace

void Pace::hold(bool isHeld) {
    if (isHeld == held_.has_value()) return;
    if (held_) held_->complete();
    held_.reset();
    if (isHeld) held_.emplace();
}

Task<void> Pace::mayGoOn() {
    while (true) {
        if (held_) {
            const auto held = *held_;
            co_await held;
        } else if (co_await isBatteryLow()) {
            co_await sleep(betweenLooks);
        } else if (!held_) {
            co_return;
        }
    }
}

Task<bool> Pace::isBatteryLow() {
    if (lookedAt_ && executor_.now() - *lookedAt_ < betweenLooks) co_return isLow_;
    const auto left =
        co_await runOn(worker_, [&background = background_] { return background.batteryLeft(); });
    lookedAt_ = executor_.now();
    isLow_ = left && *left < lowBattery;
    co_return isLow_;
}

}  // namespace dorix
