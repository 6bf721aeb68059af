#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace dorix {

/// Keeps an observer registered; letting go of it ends the observation. It may outlive what it observes.
class [[nodiscard]] Subscription {
 public:
    Subscription() = default;
    explicit Subscription(std::shared_ptr<void> token) : token_(std::move(token)) {}
    void reset() { token_.reset(); }
    explicit operator bool() const { return token_ != nullptr; }

 private:
    std::shared_ptr<void> token_;
};

/// A list of observers. Observers may subscribe and unsubscribe while they are told; one that goes meanwhile
/// is not called, one that comes is told from the next time on. One thread.
template <typename... Args>
class Observers {
 public:
    using Function = std::function<void(const Args&...)>;

    Subscription add(Function function) {
        auto observer = std::make_shared<Function>(std::move(function));
        std::erase_if(observers_, [](const auto& other) { return other.expired(); });
        observers_.push_back(observer);
        return Subscription(observer);
    }

    bool isEmpty() const {
        return std::ranges::all_of(observers_, [](const auto& observer) { return observer.expired(); });
    }

    void notify(const Args&... args) const {
        const auto told = observers_;
        for (const auto& weak : told) {
            if (auto observer = weak.lock()) (*observer)(args...);
        }
    }

 private:
    std::vector<std::weak_ptr<Function>> observers_;
};

/// A value that tells its observers when it changes. Setting an equal value tells nobody; subscribing does
/// not tell the current value. Main executor.
template <typename T>
class Observable {
 public:
    Observable() = default;
    explicit Observable(T value) : value_(std::move(value)) {}
    Observable(const Observable&) = delete;
    Observable& operator=(const Observable&) = delete;

    const T& get() const { return value_; }

    void set(T value) {
        if (value == value_) return;
        value_ = std::move(value);
        // The field itself: when an observer sets it again, those not yet told get the newest, not this
        // value.
        observers_.notify(value_);
    }

    Subscription subscribe(std::function<void(const T&)> observer) const {
        return observers_.add(std::move(observer));
    }

 private:
    T value_{};
    mutable Observers<T> observers_;  // who looks on is no part of the value
};

}  // namespace dorix
