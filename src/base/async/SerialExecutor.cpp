#include "base/async/SerialExecutor.h"

#include "base/async/SystemClock.h"

#include <algorithm>
#include <chrono>

namespace dorix {

SerialExecutor::SerialExecutor() : thread_([this] { run(); }) {}

SerialExecutor::~SerialExecutor() {
    {
        std::scoped_lock lock(mutex_);
        stopping_ = true;
    }
    wake_.notify_one();
    thread_.join();
}

void SerialExecutor::post(Work work) {
    {
        std::scoped_lock lock(mutex_);
        posted_.push_back(std::move(work));
    }
    wake_.notify_one();
}

Executor::TimerId SerialExecutor::after(double seconds, Work work) {
    const std::scoped_lock lock(mutex_);
    wake_.notify_one();
    return timers_.add(now() + std::max(seconds, 0.0), std::move(work));
}

void SerialExecutor::cancel(TimerId id) {
    Work dropped;  // destroyed outside the lock: it may own what calls back in here
    const std::scoped_lock lock(mutex_);
    dropped = timers_.remove(id);
}

double SerialExecutor::now() const { return steadySeconds(); }
double SerialExecutor::date() const { return wallSeconds(); }

void SerialExecutor::run() {
    std::unique_lock lock(mutex_);
    while (Work work = takeNext(lock)) {
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
}

/// Timers that are due come first, as posted work may post more without end; they no longer run once the
/// executor is to stop.
SerialExecutor::Work SerialExecutor::takeNext(std::unique_lock<std::mutex>& lock) {
    while (true) {
        if (!stopping_) {
            if (Work due = timers_.takeDue(now())) return due;
        }
        if (!posted_.empty()) {
            Work work = std::move(posted_.front());
            posted_.pop_front();
            return work;
        }
        if (stopping_) return nullptr;
        if (const auto due = timers_.nextDue()) {
            wake_.wait_for(lock, std::chrono::duration<double>(*due - now()));
        } else {
            wake_.wait(lock);
        }
    }
}

}  // namespace dorix
