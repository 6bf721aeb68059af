#pragma once

#include "base/async/Task.h"

#include <exception>
#include <memory>
#include <mutex>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace dorix {

/// A result that is made once, on any thread, and awaited by any number of tasks, each of which goes on on
/// its own executor. The bridge from callbacks to tasks. Copies share the one result.
template <typename T>
class Completion {
 public:
    using Value = std::conditional_t<std::is_void_v<T>, std::monostate, T>;

    /// Any thread. False when it was completed before; the first result stands.
    template <typename U = Value>
    bool complete(U&& value = U{}) const {
        return settle(Result(std::in_place_index<1>, std::forward<U>(value)));
    }

    /// Any thread. Every wait throws `error`.
    bool fail(std::exception_ptr error) const {
        return settle(Result(std::in_place_index<2>, std::move(error)));
    }

    /// Any thread.
    bool isDone() const {
        std::scoped_lock lock(state_->mutex);
        return state_->isDone();
    }

    /// Whether a wait copies the value or takes it away.
    enum class Get { copy, move };
    template <Get get>
    class Awaiter;

    /// Throws Cancelled when the waiting task is stopped first; a result that is there already is given
    /// even to a stopped task. The value is copied to each waiter.
    Awaiter<Get::copy> operator co_await() const& { return {state_, Wait::Stoppable::yes}; }

    /// The same for the only one who waits, which the value is moved to: co_await std::move(result).
    Awaiter<Get::move> operator co_await() && { return {state_, Wait::Stoppable::yes}; }

    /// The same waits, but a stop request does not cut them short: co_await result.throughStop().
    Awaiter<Get::copy> throughStop() const& { return {state_, Wait::Stoppable::no}; }
    Awaiter<Get::move> throughStop() && { return {state_, Wait::Stoppable::no}; }

 private:
    using Result = std::variant<std::monostate, Value, std::exception_ptr>;

    struct State {
        std::mutex mutex;
        // Written once, under the mutex; used without it after a waiter saw it done.
        Result result;
        std::vector<std::weak_ptr<Waiter>> waiters;

        bool isDone() const { return result.index() != 0; }
    };

    bool settle(Result result) const {
        std::vector<std::weak_ptr<Waiter>> waiters;
        {
            std::scoped_lock lock(state_->mutex);
            if (state_->isDone()) return false;
            state_->result = std::move(result);
            waiters.swap(state_->waiters);
        }
        for (const auto& weak : waiters) {
            if (auto waiter = weak.lock()) waiter->wake(Waiter::Outcome::ready);
        }
        return true;
    }

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

template <typename T>
template <typename Completion<T>::Get get>
class Completion<T>::Awaiter : Wait {
 public:
    Awaiter(std::shared_ptr<State> state, Wait::Stoppable stoppable)
        : Wait(stoppable), state_(std::move(state)) {}

    bool await_ready() const {
        std::scoped_lock lock(state_->mutex);
        return state_->isDone();
    }
    template <typename Promise>
    bool await_suspend(std::coroutine_handle<Promise> handle) {
        auto waiter = suspend(handle.promise().root(), handle);
        {
            std::scoped_lock lock(state_->mutex);
            if (state_->isDone()) return false;
            std::erase_if(state_->waiters, [](const auto& other) { return other.expired(); });
            state_->waiters.push_back(waiter);
        }
        armStop();
        return true;
    }
    T await_resume() const {
        throwIfCancelled();
        if (state_->result.index() == 2) std::rethrow_exception(std::get<2>(state_->result));
        if constexpr (!std::is_void_v<T>) {
            auto& value = std::get<1>(state_->result);
            if constexpr (get == Get::move) {
                return std::move(value);
            } else {
                return value;
            }
        }
    }

 private:
    const std::shared_ptr<State> state_;
};

/// Runs `function` on `executor` and gives its result, or its exception, to the awaiting task. The function
/// owns what it captures: it runs to its end even when the task that waits is cancelled or destroyed
/// meanwhile.
template <typename Function>
Task<std::invoke_result_t<Function>> runOn(Executor& executor, Function function) {
    using T = std::invoke_result_t<Function>;
    Completion<T> result;
    executor.post([result, function = std::move(function)]() mutable {
        try {
            if constexpr (std::is_void_v<T>) {
                function();
                result.complete();
            } else {
                result.complete(function());
            }
        } catch (...) {
            result.fail(std::current_exception());
        }
    });
    co_return co_await std::move(result);
}

}  // namespace dorix
