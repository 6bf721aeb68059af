#include "watchdog/WatchdogTask.h"

#include "watchdog/WatchdogArguments.h"

#include <utility>

namespace dorix {

void WatchdogTask::spawn() {
    const WatchdogArguments arguments{launcher_.ownProcessIdentifier(), launcher_.bundlePath()};
    task_ = launcher_.launchSelf(arguments.commandLine());
}

void WatchdogTask::terminate() {
    if (const auto task = std::exchange(task_, nullptr)) task->terminate();
}

}  // namespace dorix
