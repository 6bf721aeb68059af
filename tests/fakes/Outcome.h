#pragma once

#include "base/Error.h"
#include "base/async/ManualExecutor.h"
#include "base/async/TaskScope.h"

#include <exception>
#include <string>
#include <type_traits>

namespace dorix {

/// What awaiting the task gives: a text for the result, or for what was thrown; "pending" when it has not
/// ended, "done" where it gives nothing.
template <typename T>
std::string outcome(ManualExecutor& executor, const TaskHandle<T>& task) {
    std::string text = "pending";
    const auto read = [](TaskHandle<T> handle, std::string& out) -> Task<void> {
        try {
            if constexpr (std::is_void_v<T>) {
                co_await handle;
                out = "done";
            } else if constexpr (std::is_convertible_v<T, std::string>) {
                out = co_await handle;
            } else {
                out = std::to_string(co_await handle);
            }
        } catch (const Cancelled&) {
            out = "cancelled";
        } catch (...) {
            out = localizedDescription(std::current_exception());
        }
    };
    TaskScope reader(executor);
    reader.spawn(read(task, text));
    executor.runPosted();
    return text;
}

}  // namespace dorix
