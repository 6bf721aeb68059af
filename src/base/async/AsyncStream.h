#pragma once

#include "base/async/Task.h"

#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace dorix {

/// An unbounded stream with an end: anybody pushes, one task takes. Copies share the one stream.
template <typename T>
class AsyncStream {
 public:
    /// Any thread; never waits for the taker. Dropped after the end.
    void push(T value) const {
        std::shared_ptr<Waiter> waiter;
        {
            std::scoped_lock lock(state_->mutex);
            if (state_->ended) return;
            state_->values.push_back(std::move(value));
            waiter = state_->waiter.lock();
        }
        if (waiter) waiter->wake(Waiter::Outcome::ready);
    }

    /// Any thread. What was pushed before is still given, then `error` is thrown, if any, or the end shown.
    void finish(std::exception_ptr error = nullptr) const {
        std::shared_ptr<Waiter> waiter;
        {
            std::scoped_lock lock(state_->mutex);
            if (state_->ended) return;
            state_->ended = true;
            state_->error = std::move(error);
            waiter = state_->waiter.lock();
        }
        if (waiter) waiter->wake(Waiter::Outcome::ready);
    }

    class Awaiter;

    /// The next value, nothing after the end. One task at a time.
    Awaiter next() const { return Awaiter(state_); }

 private:
    struct State {
        std::mutex mutex;
        std::deque<T> values;
        std::weak_ptr<Waiter> waiter;
        std::exception_ptr error;
        bool ended = false;

        bool hasNews() const { return ended || !values.empty(); }
    };

    std::shared_ptr<State> state_ = std::make_shared<State>();
};

template <typename T>
class AsyncStream<T>::Awaiter : Wait {
 public:
    explicit Awaiter(std::shared_ptr<State> state) : state_(std::move(state)) {}

    bool await_ready() const {
        std::scoped_lock lock(state_->mutex);
        return state_->hasNews();
    }
    template <typename Promise>
    bool await_suspend(std::coroutine_handle<Promise> handle) {
        auto waiter = suspend(handle.promise().root(), handle);
        {
            std::scoped_lock lock(state_->mutex);
            if (state_->hasNews()) return false;
            state_->waiter = waiter;
        }
        armStop();
        return true;
    }
    std::optional<T> await_resume() const {
        throwIfCancelled();
        std::scoped_lock lock(state_->mutex);
        if (!state_->values.empty()) {
            std::optional<T> value(std::move(state_->values.front()));
            state_->values.pop_front();
            return value;
        }
        if (state_->error) std::rethrow_exception(state_->error);
        return std::nullopt;
    }

 private:
    std::shared_ptr<State> state_;
};

}  // namespace dorix
