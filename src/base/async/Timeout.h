#pragma once

#include "base/async/TaskScope.h"
#include "base/async/Timer.h"

#include <optional>
#include <type_traits>
#include <utility>

namespace dorix {

namespace detail {

/// Gives the executor of the task that awaits it, at once.
struct OwnExecutor {
    Executor* executor = nullptr;

    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    bool await_suspend(std::coroutine_handle<Promise> handle) noexcept {
        executor = &handle.promise().root()->executor();
        return false;
    }
    Executor& await_resume() const noexcept { return *executor; }
};

/// What a task has given so far: nothing before its end.
template <typename T>
using InTime = std::conditional_t<std::is_void_v<T>, bool, std::optional<T>>;

template <typename T>
Task<void> deliver(Task<T> task, Completion<InTime<T>> result) {
    try {
        if constexpr (std::is_void_v<T>) {
            co_await std::move(task);
            result.complete(true);
        } else {
            result.complete(co_await std::move(task));
        }
    } catch (...) {
        result.fail(std::current_exception());
    }
}

}  // namespace detail

/// The task's result if it comes within `seconds`, or else none; of a task without a result, whether it has
/// ended. What is late, or what the one who waits is stopped before, is destroyed where it stands.
template <typename T>
Task<detail::InTime<T>> withTimeout(Task<T> task, double seconds) {
    auto& executor = co_await detail::OwnExecutor();
    Completion<detail::InTime<T>> result;
    Timer timer(executor);
    timer.once(seconds, [result] { result.complete(detail::InTime<T>()); });
    TaskScope scope(executor);
    scope.spawn(detail::deliver(std::move(task), result));
    co_return co_await std::move(result);
}

}  // namespace dorix
