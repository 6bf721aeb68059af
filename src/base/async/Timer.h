#pragma once

#include "base/async/Executor.h"

#include <functional>
#include <memory>

namespace dorix {

/// A one-shot or repeating timer that stops with its owner. Starting it again replaces what it was set to.
/// Its function may stop, restart or destroy it. Executor's thread only.
class Timer {
 public:
    using Function = std::function<void()>;

    explicit Timer(Executor& executor) : executor_(executor) {}
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;
    ~Timer() { stop(); }

    void once(double seconds, Function function);

    /// Fires at multiples of `seconds` from now; firings that were missed are not made up for.
    void repeat(double seconds, Function function);

    void stop();
    bool isActive() const { return running_ != nullptr; }

 private:
    struct Running {
        Function function;
        double start = 0;
        double interval = 0;
        double beats = 0;
        Executor::TimerId id = Executor::TimerId::none;
    };

    void scheduleBeat(const std::shared_ptr<Running>& running);

    Executor& executor_;
    std::shared_ptr<Running> running_;
};

}  // namespace dorix
