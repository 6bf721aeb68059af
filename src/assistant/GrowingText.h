#pragma once

#include "base/async/Timer.h"

#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace dorix {

/// A text that arrives piece by piece, and is shown as it grows: at once while it is short, and seldom enough
/// when it is long that showing it, which costs its whole length each time, keeps nobody busy. Main executor.
class GrowingText {
 public:
    using Show = std::function<void(const std::string& text)>;

    GrowingText(Executor& executor, Show show)
        : executor_(executor), show_(std::move(show)), timer_(executor) {}

    /// All of the text so far, which begins with what was given before.
    void grow(std::string_view whole);

    /// Shows what was not shown yet.
    void flush();

 private:
    void show();

    Executor& executor_;
    const Show show_;
    std::string text_;
    double nextAt_ = 0;  // when it may be shown again, by the executor's clock
    Timer timer_;        // for what waits until then
};

}  // namespace dorix
