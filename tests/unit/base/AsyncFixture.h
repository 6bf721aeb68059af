#pragma once

#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>
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

    /// What awaiting the handle gives: a text for the result, or for what was thrown.
    template <typename T>
    std::string outcome(const TaskHandle<T>& task) {
        std::string text = "pending";
        auto read = [](TaskHandle<T> handle, std::string& out) -> Task<void> {
            try {
                if constexpr (std::is_void_v<T>) {
                    co_await handle;
                    out = "done";
                } else {
                    out = std::to_string(co_await handle);
                }
            } catch (const Cancelled&) {
                out = "cancelled";
            } catch (const std::exception& error) {
                out = error.what();
            }
        };
        TaskScope reader(executor);
        reader.spawn(read(task, text));
        executor.runPosted();
        return text;
    }

    ManualExecutor executor;
    std::vector<std::string> trace;
};

}  // namespace dorix
