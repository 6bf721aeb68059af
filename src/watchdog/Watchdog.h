#pragma once

#include "base/async/Timer.h"
#include "platform/Processes.h"
#include "watchdog/WatchdogTask.h"

#include <functional>
#include <string>

namespace dorix {

/// Waits for the program that started it to end, and starts it again if it may. A program that ends as it
/// should ends its watchdog first. Executor's thread.
class Watchdog {
 public:
    struct Environment {
        Executor& executor;
        Processes& processes;
        /// Whether the program may come back once more; asked once for each return.
        std::function<bool()> mayRelaunch;
        /// Starts the application at that path.
        std::function<void(const std::string& bundlePath)> open;
        /// The program has ended, one way or another.
        std::function<void()> parentExited;
        /// Ends the watchdog's process, with success whatever has happened.
        std::function<void()> exit;
    };

    explicit Watchdog(Environment environment);

    /// Begins to watch; exits at once when there is nobody to be watched.
    void start(const WatchdogArguments& arguments);
    /// What becomes of the program from now on is meant.
    void stop();

 private:
    void parentExited(const std::string& bundlePath);

    Environment env_;
    Subscription watch_;
    Timer relaunch_;
};

}  // namespace dorix
