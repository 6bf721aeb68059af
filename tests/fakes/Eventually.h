#pragma once

#include "base/async/ManualExecutor.h"

#include <chrono>
#include <thread>

namespace dorix {

/// Whether it comes to hold, in five seconds at most, when some of the work has a thread of its own.
template <typename Condition>
bool eventually(ManualExecutor& executor, const Condition& condition) {
    for (int i = 0; i < 5000 && !condition(); ++i) {
        executor.runPosted();
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return condition();
}

}  // namespace dorix
