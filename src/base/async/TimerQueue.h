#pragma once

#include "base/async/Executor.h"

#include <map>
#include <optional>
#include <utility>

namespace dorix {

/// The timers of an executor, by the moment when they are due; those of one moment in the order they came.
/// Nothing here runs or destroys work under the caller's lock: work is handed back. Not synchronised.
class TimerQueue {
 public:
    Executor::TimerId add(double due, Executor::Work work) {
        const Executor::TimerId id{++lastId_};
        timers_.emplace(Due{due, id}, std::move(work));
        return id;
    }

    /// The work of a timer that has not run yet, to be destroyed where that may call back; empty for others.
    Executor::Work remove(Executor::TimerId id) {
        for (auto timer = timers_.begin(); timer != timers_.end(); ++timer) {
            if (timer->first.second == id) return std::move(timers_.extract(timer).mapped());
        }
        return nullptr;
    }

    bool isEmpty() const { return timers_.empty(); }

    /// When the next timer is due; none without timers.
    std::optional<double> nextDue() const {
        if (timers_.empty()) return std::nullopt;
        return timers_.begin()->first.first;
    }

    /// The work of the next timer that is due at `now`; empty when none is.
    Executor::Work takeDue(double now) {
        if (timers_.empty() || timers_.begin()->first.first > now) return nullptr;
        return std::move(timers_.extract(timers_.begin()).mapped());
    }

 private:
    using Due = std::pair<double, Executor::TimerId>;

    std::map<Due, Executor::Work> timers_;
    std::uint64_t lastId_ = 0;
};

}  // namespace dorix
