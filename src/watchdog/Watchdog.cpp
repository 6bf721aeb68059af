#include "watchdog/Watchdog.h"

#include <utility>

namespace dorix {

namespace {
/// Long enough for the display and the sound server to have let go of the one that died.
constexpr double relaunchDelay = 2.0;
}  // namespace

Watchdog::Watchdog(Environment environment) : env_(std::move(environment)), relaunch_(env_.executor) {}

void Watchdog::start(const WatchdogArguments& arguments) {
    watch_ = env_.processes.watchExit(arguments.parent,
                                      [this, path = arguments.bundlePath] { parentExited(path); });
    // Nobody to watch: whether the program crashed or was quit cannot be told any more.
    if (!watch_) env_.exit();
}

void Watchdog::parentExited(const std::string& bundlePath) {
    env_.parentExited();
    relaunch_.once(relaunchDelay, [this, bundlePath] {
        if (env_.mayRelaunch()) env_.open(bundlePath);
        env_.exit();
    });
}

}  // namespace dorix
