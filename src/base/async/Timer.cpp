#include "base/async/Timer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace dorix {

void Timer::once(double seconds, Function function) {
    stop();
    running_ = std::make_shared<Running>(Running{.function = std::move(function)});
    running_->id = executor_.after(seconds, [this, running = running_] {
        running_.reset();
        running->function();
    });
}

void Timer::repeat(double seconds, Function function) {
    stop();
    running_ = std::make_shared<Running>(
        Running{.function = std::move(function), .start = executor_.now(), .interval = seconds});
    scheduleBeat(running_);
}

void Timer::stop() {
    if (auto running = std::exchange(running_, nullptr)) executor_.cancel(running->id);
}

void Timer::scheduleBeat(const std::shared_ptr<Running>& running) {
    const double elapsed = executor_.now() - running->start;
    running->beats = std::max(running->beats, std::floor(elapsed / running->interval)) + 1;
    const double wait = running->start + running->beats * running->interval - executor_.now();
    running->id = executor_.after(wait, [this, running] {
        scheduleBeat(running);
        running->function();  // last: it may destroy this timer
    });
}

}  // namespace dorix
