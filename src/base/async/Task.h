#pragma once

#include "base/async/Waiter.h"

#include <concepts>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

namespace dorix {

template <typename T>
class [[nodiscard]] Task;

namespace detail {

class TaskPromiseBase {
 public:
    struct FinalAwaiter {
        bool await_ready() const noexcept { return false; }
        template <typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> ended) const noexcept {
            return ended.promise().continuation_;
        }
        void await_resume() const noexcept {}
    };

    std::suspend_always initial_suspend() const noexcept { return {}; }
    FinalAwaiter final_suspend() const noexcept { return {}; }
    void unhandled_exception() noexcept { error_ = std::current_exception(); }

    const std::shared_ptr<TaskRoot>& root() const { return root_; }

    void startUnder(std::shared_ptr<TaskRoot> root, std::coroutine_handle<> continuation) {
        root_ = std::move(root);
        continuation_ = continuation;
    }

 protected:
    void rethrowError() const {
        if (error_) std::rethrow_exception(error_);
    }

 private:
    std::shared_ptr<TaskRoot> root_;
    std::coroutine_handle<> continuation_ = std::noop_coroutine();
    std::exception_ptr error_;
};

template <typename T>
class TaskPromise : public TaskPromiseBase {
 public:
    Task<T> get_return_object();
    template <std::convertible_to<T> U = T>
    void return_value(U&& value) {
        value_.emplace(std::forward<U>(value));
    }
    T takeResult() {
        rethrowError();
        return std::move(*value_);
    }

 private:
    std::optional<T> value_;
};

template <>
class TaskPromise<void> : public TaskPromiseBase {
 public:
    Task<void> get_return_object();
    void return_void() const noexcept {}
    void takeResult() const { rethrowError(); }
};

}  // namespace detail

/// A coroutine that starts when it is awaited, on the executor of the task that awaits it, and whose result
/// or exception goes to that one awaiter. Parameters are taken by value: a reference to a caller's temporary
/// would dangle at the first suspension. Destroying a Task that is suspended destroys the waits below it.
template <typename T>
class Task {
 public:
    using promise_type = detail::TaskPromise<T>;

    Task(Task&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
    Task& operator=(Task&& other) noexcept {
        std::swap(frame_, other.frame_);
        return *this;
    }
    ~Task() {
        if (frame_) frame_.destroy();
    }

    struct Awaiter {
        Task task;
        bool await_ready() const noexcept { return false; }
        template <typename Promise>
        std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> parent) noexcept {
            task.frame_.promise().startUnder(parent.promise().root(), parent);
            return task.frame_;
        }
        T await_resume() { return task.frame_.promise().takeResult(); }
    };

    Awaiter operator co_await() && noexcept { return Awaiter{std::move(*this)}; }

 private:
    friend promise_type;
    explicit Task(std::coroutine_handle<promise_type> frame) : frame_(frame) {}

    std::coroutine_handle<promise_type> frame_;
};

namespace detail {
template <typename T>
Task<T> TaskPromise<T>::get_return_object() {
    return Task<T>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}
inline Task<void> TaskPromise<void>::get_return_object() {
    return Task<void>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}
}  // namespace detail

}  // namespace dorix
