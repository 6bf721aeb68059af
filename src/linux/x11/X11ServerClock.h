#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

namespace dorix {

/// Tells when events of the X server happened, on the executor's clock, however long they waited to be read.
/// A server on this computer has the same clock; another one's is learned from the events that came soonest.
class X11ServerClock {
 public:
    /// `milliseconds` is an event's time, `now` when it is read. Never later than `now`.
    double at(std::uint32_t milliseconds, double now) {
        const auto ours = static_cast<std::uint32_t>(static_cast<std::uint64_t>(now * 1000));
        const auto apart = static_cast<std::int32_t>(ours - milliseconds) / 1000.0;
        if (!leastApart_) {
            leastApart_ = apart >= 0 && apart < longestWait ? 0.0 : apart;
        } else if (apart - *leastApart_ > longestWait) {
            leastApart_ = apart;  // its milliseconds began anew
        } else {
            leastApart_ = std::min(apart, *leastApart_ + (now - last_) * drift);
        }
        last_ = now;
        return now - std::max(apart - *leastApart_, 0.0);
    }

 private:
    static constexpr double longestWait = 30.0;  // seconds, for an event
    static constexpr double drift = 1e-4;        // of a clock, more than any computer's

    std::optional<double> leastApart_;
    double last_ = 0;
};

}  // namespace dorix
