#include "base/async/SerialExecutor.h"

#include <algorithm>
#include <chrono>

namespace dorix {

namespace {
thread_local const SerialExecutor* current = nullptr;
}

void SerialExecutor::stop() {
    {
        const std::scoped_lock lock(mutex_);
        stopping_ = true;
        wake();
    }
    if (thread_.joinable()) thread_.join();
}

void SerialExecutor::post(Work work) {
    const std::scoped_lock lock(mutex_);
    posted_.push_back(std::move(work));
    wake();
    if (!stopping_ && !thread_.joinable()) thread_ = std::thread([this] { run(); });
}

Executor::TimerId SerialExecutor::after(double seconds, Work work) {
    return timers_.add(now() + std::max(seconds, 0.0), std::move(work));
}

void SerialExecutor::cancel(TimerId id) {
    const auto dropped = timers_.remove(id);  // it may own what calls back in here
}

bool SerialExecutor::isCurrent() const { return current == this; }

void SerialExecutor::run() {
    current = this;
    while (runPosted()) {
        runDueTimers();
        const auto due = timers_.nextDue();
        wait(due ? std::optional(std::max(*due - now(), 0.0)) : std::nullopt);
    }
}

/// Whether the thread is to go on.
bool SerialExecutor::runPosted() {
    std::unique_lock lock(mutex_);
    // As many as are here now: work may post more without end, and timers are to have their turn.
    for (auto count = posted_.size(); count > 0 && mayGoOn(); --count) {
        Work work = std::move(posted_.front());
        posted_.pop_front();
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
    return mayGoOn();
}

void SerialExecutor::runDueTimers() {
    const auto mayRun = [this] {
        const std::scoped_lock lock(mutex_);
        return !stopping_;
    };
    const double time = now();
    while (mayRun()) {
        auto work = timers_.takeDue(time);
        if (!work) return;
        work();
    }
}

void SerialExecutor::wait(std::optional<double> seconds) {
    std::unique_lock lock(mutex_);
    const auto isAwaited = [this] { return stopping_ || !posted_.empty(); };
    if (seconds) {
        woken_.wait_for(lock, std::chrono::duration<double>(*seconds), isAwaited);
    } else {
        woken_.wait(lock, isAwaited);
    }
}

void SerialExecutor::wake() { woken_.notify_one(); }

}  // namespace dorix
