#pragma once

#include "base/async/TaskScope.h"
#include "linux/qt/QtMainLoop.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <array>
#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace dorix {

/// The main executor of a test against a real service: runs until something has come true.
class EventLoop {
    struct Application {
        int argc = 1;
        std::string name = "test";
        std::array<char*, 2> argv{name.data(), nullptr};
        QCoreApplication application{argc, argv.data()};
    };

    Application application_;  // first: the loop needs it

 public:
    QtMainLoop main;

    /// Runs the loop until `condition` holds, for `seconds` at most; whether it held.
    bool runUntil(const std::function<bool()>& condition, double seconds = 15) {
        const double deadline = main.now() + seconds;
        // Conditions may hang on other threads and processes: looked at every few milliseconds.
        wakeSoon();
        while (!condition()) {
            if (main.now() > deadline) return false;
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        }
        return true;
    }

    /// Runs the loop for a while, to see that nothing happens.
    void runFor(double seconds) {
        runUntil([] { return false; }, seconds);
    }

    /// What the task gives.
    template <typename T>
    T result(Task<T> task, double seconds = 15) {
        std::optional<T> value;
        TaskScope scope(main);
        scope.spawn([](Task<T> inner, std::optional<T>& into) -> Task<void> {
            into = co_await std::move(inner);
        }(std::move(task), value));
        EXPECT_TRUE(runUntil([&] { return value.has_value(); }, seconds));
        return value ? std::move(*value) : T{};
    }

 private:
    void wakeSoon() {
        main.cancel(wake_);
        wake_ = main.after(0.005, [this] { wakeSoon(); });
    }

    Executor::TimerId wake_ = Executor::TimerId::none;
};

}  // namespace dorix
