#include "watchdog/Watchdog.h"

#include <utility>

namespace dorix {

namespace {
/// Long enough for the display and the sound server to have let go of the one that died.
constexpr double relaunchDelay = 2.0;
}  // namespace

Watchdog::Watchdog(Environment environment) : env_(std::move(environment)), relaunch_(env_.executor) {}

void Watchdog::start(const WatchdogArguments& arguments) {
    watch_ = env_.processes.watchParentExit(arguments.parent,
                                            [this, path = arguments.bundlePath] { parentExited(path); });
    // It has gone, and whether it crashed or was quit cannot be told any more; or it is a stranger, whose end
    // says nothing of the program.
    if (!watch_) env_.exit();
}

void Watchdog::stop() {
    watch_.reset();
    relaunch_.stop();
}

void Watchdog::parentExited(const std::string& bundlePath) {
    env_.parentExited();
    relaunch_.once(relaunchDelay, [this, bundlePath] {
        if (env_.mayRelaunch()) env_.open(bundlePath);
        env_.exit();
    });
}

}  // namespace dorix
