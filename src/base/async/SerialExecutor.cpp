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
    std::scoped_lock lock(mutex_);
    const TimerId id{++lastId_};
    timers_.emplace(Due{now() + std::max(seconds, 0.0), id}, std::move(work));
    wake_.notify_one();
    return id;
}

void SerialExecutor::cancel(TimerId id) {
    Work dropped;  // destroyed outside the lock: it may own what calls back in here
    std::scoped_lock lock(mutex_);
    const auto timer =
        std::ranges::find_if(timers_, [id](const auto& entry) { return entry.first.second == id; });
    if (timer == timers_.end()) return;
    dropped = std::move(timer->second);
    timers_.erase(timer);
}

double SerialExecutor::now() const { return steadySeconds(); }
double SerialExecutor::date() const { return wallSeconds(); }

void SerialExecutor::run() {
    std::unique_lock lock(mutex_);
    while (Work work = takeDue(lock)) {
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
}

SerialExecutor::Work SerialExecutor::takeDue(std::unique_lock<std::mutex>& lock) {
    while (true) {
        if (!posted_.empty()) {
            Work work = std::move(posted_.front());
            posted_.pop_front();
            return work;
        }
        if (stopping_) return nullptr;
        if (timers_.empty()) {
            wake_.wait(lock);
            continue;
        }
        const double wait = timers_.begin()->first.first - now();
        if (wait <= 0) return std::move(timers_.extract(timers_.begin()).mapped());
        wake_.wait_for(lock, std::chrono::duration<double>(wait));
    }
}

}  // namespace dorix
