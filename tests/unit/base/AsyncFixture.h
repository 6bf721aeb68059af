#pragma once

#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"
#include "fakes/Outcome.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

namespace dorix {

class AsyncTest : public testing::Test {
 protected:
    /// Runs the executor until the task, which waits for another thread, is done.
    template <typename T>
    void finish(const TaskHandle<T>& task) {
        while (!task.isDone()) {
            executor.runPosted();
            std::this_thread::yield();
        }
    }

    template <typename T>
    std::string outcome(const TaskHandle<T>& task) {
        return dorix::outcome(executor, task);
    }

    ManualExecutor executor;
    std::vector<std::string> trace;
};

}  // namespace dorix
