#pragma once

#include "base/async/Completion.h"
#include "base/async/Executor.h"
#include "base/async/Timeout.h"

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <exception>
#include <functional>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>

namespace dorix {

/// Threads for work on the disk that may never come back, as in a folder of a server that has gone. Such a
/// thread is left behind where it hangs: nobody waits for it, and it has nothing of the program's but what
/// its work was given. Main executor.
class LooseThreads {
 public:
    /// Between a thread and who waits for it.
    class Watch {
     public:
        /// Called by the work at every step: this is how it shows that it does not hang. False when nobody
        /// waits any more.
        bool goesOn() const {
            ++steps_;
            return !isStopped_;
        }

     private:
        friend class LooseThreads;
        mutable std::atomic<std::uint64_t> steps_ = 0;
        mutable std::atomic<bool> hasAnswered_ = false;
        std::atomic<bool> isStopped_ = false;
        std::mutex mutex_;
        std::condition_variable ended_;
        bool isOver_ = false;  // guarded by mutex_
    };

    /// `onStart` is the first that each thread does.
    explicit LooseThreads(std::function<void()> onStart = [] {}) : onStart_(std::move(onStart)) {}
    ~LooseThreads();
    LooseThreads(const LooseThreads&) = delete;
    LooseThreads& operator=(const LooseThreads&) = delete;

    /// What `work`, called with its Watch, gives; nothing when it gets no further for `patience` seconds, or
    /// an earlier work at that place still hangs. Work owns what it captures. It is asked to stop when the
    /// task that waits for it goes.
    template <typename Function>
    Task<std::optional<std::invoke_result_t<Function, const Watch&>>> run(std::string place, Function work,
                                                                          double patience) {
        if (isOccupied(place)) co_return std::nullopt;
        Completion<std::invoke_result_t<Function, const Watch&>> result;
        const auto watch = start(std::move(place), [result, work = std::move(work)](const Watch& own) {
            try {
                auto given = work(own);
                own.hasAnswered_ = true;
                result.complete(std::move(given));
            } catch (...) {
                own.hasAnswered_ = true;
                result.fail(std::current_exception());
            }
        });
        const StopAtEnd stop{watch};
        while (true) {
            const auto steps = watch->steps_.load();
            if (auto given = co_await withTimeout(resultOf(result), patience)) co_return given;
            if (watch->steps_ == steps) co_return std::nullopt;
        }
    }

 private:
    using Work = std::move_only_function<void(const Watch&)>;
    struct Thread {
        std::string place;
        std::shared_ptr<Watch> watch;
        std::thread thread;
    };
    struct StopAtEnd {
        std::shared_ptr<Watch> watch;
        ~StopAtEnd() { watch->isStopped_ = true; }
    };

    template <typename T>
    static Task<T> resultOf(Completion<T> result) {
        co_return co_await std::move(result);
    }
    static bool isOver(Watch& watch, double patience);
    bool isOccupied(const std::string& place);
    std::shared_ptr<Watch> start(std::string place, Work work);

    const std::function<void()> onStart_;
    std::list<Thread> threads_;
};

}  // namespace dorix
