#include "memory/disk/LooseThreads.h"

#include <algorithm>
#include <chrono>

namespace dorix {

namespace {
constexpr double lastPatience = 1;  // seconds, with all of them, at the program's end
}

LooseThreads::~LooseThreads() {
    for (auto& thread : threads_) thread.watch->isStopped_ = true;
    using Clock = std::chrono::steady_clock;
    const auto until = Clock::now() + std::chrono::duration<double>(lastPatience);
    for (auto& thread : threads_) {
        const std::chrono::duration<double> left = until - Clock::now();
        if (isOver(*thread.watch, left.count())) {
            thread.thread.join();
        } else {
            thread.thread.detach();
        }
    }
}

bool LooseThreads::isOver(Watch& watch, double patience) {
    std::unique_lock lock(watch.mutex_);
    return watch.ended_.wait_for(lock, std::chrono::duration<double>(patience),
                                 [&watch] { return watch.isOver_; });
}

/// Lets go of the threads that have ended, also of those that hung for a while.
bool LooseThreads::isOccupied(const std::string& place) {
    std::erase_if(threads_, [](Thread& thread) {
        const bool isDone = isOver(*thread.watch, 0);
        if (isDone) thread.thread.join();
        return isDone;
    });
    return std::ranges::any_of(threads_, [&place](const Thread& thread) {
        return thread.place == place && !thread.watch->hasAnswered_;
    });
}

std::shared_ptr<LooseThreads::Watch> LooseThreads::start(std::string place, Work work) {
    auto watch = std::make_shared<Watch>();
    std::thread thread([watch, onStart = onStart_, work = std::move(work)]() mutable {
        onStart();
        work(*watch);
        work = nullptr;  // what it owns goes before anybody takes the thread for ended
        const std::scoped_lock lock(watch->mutex_);
        watch->isOver_ = true;
        watch->ended_.notify_all();
    });
    threads_.push_back({.place = std::move(place), .watch = watch, .thread = std::move(thread)});
    return watch;
}

}  // namespace dorix
