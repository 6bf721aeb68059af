#pragma once

#include "base/async/Completion.h"

#include <type_traits>
#include <utility>

namespace dorix {

/// Runs `function` on `queue` (a serial executor, a pool) and gives its result, or its exception, to the
/// awaiting task. The function owns what it captures: it runs to its end even when the task that waits is
/// cancelled or destroyed meanwhile.
template <typename Function>
Task<std::invoke_result_t<Function>> runOn(WorkQueue& queue, Function function) {
    using T = std::invoke_result_t<Function>;
    Completion<T> result;
    queue.post([result, function = std::move(function)]() mutable {
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
    co_return co_await result;
}

}  // namespace dorix
