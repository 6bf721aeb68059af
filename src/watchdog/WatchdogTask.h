#pragma once

#include "platform/ProgramLauncher.h"

#include <memory>

namespace dorix {

/// The program's hold on its watchdog. Main executor.
class WatchdogTask {
 public:
    explicit WatchdogTask(ProgramLauncher& launcher) : launcher_(launcher) {}

    /// Starts the watchdog over this process. Without one, which is not reported, the program runs all the
    /// same and does not come back after a crash.
    void spawn();

    /// Ends the watchdog: what follows is meant.
    void terminate();

 private:
    ProgramLauncher& launcher_;
    std::unique_ptr<ChildProcess> task_;
};

}  // namespace dorix
