#include "app/WatchdogProcess.h"

#include "base/Log.h"
#include "linux/log/JournalLog.h"
#include "linux/loop/PollLoop.h"
#include "linux/process/BlockedSignals.h"
#include "linux/process/LinuxProcesses.h"
#include "linux/xdg/Environment.h"
#include "linux/xdg/JsonUserDefaults.h"
#include "watchdog/RelaunchLimiter.h"
#include "watchdog/Watchdog.h"

#include <csignal>
#include <semaphore>
#include <string>

namespace dorix {

namespace {

/// Opens the defaults for this moment only: the program has written to them as long as it lived.
bool mayRelaunch(Executor& executor) {
    const double date = executor.date();
    const auto file = xdgConfigHome() / "dorix" / "defaults.json";
    {
        JsonUserDefaults defaults(executor, file);
        if (!RelaunchLimiter(defaults).allow(date)) return false;
    }
    // Where returns cannot be counted, a program that dies at once would be started for ever.
    JsonUserDefaults kept(executor, file);
    return RelaunchLimiter(kept).hasCounted(date);
}

}  // namespace

int runWatchdog(std::span<const std::string_view> arguments) {
    const auto told = parseWatchdogArguments(arguments);
    if (!told) return 0;
    const auto termination = blockedSignals({SIGTERM});
    logToStderrAndJournal();
    PollLoop loop;
    LinuxProcesses processes(loop);
    std::counting_semaphore<> ended(0);
    Watchdog watchdog({.executor = loop,
                       .processes = processes,
                       .mayRelaunch =
                           [&loop] {
                               const bool may = mayRelaunch(loop);
                               logLine(may ? "ha terminado de golpe; se vuelve a abrir"
                                           : "ha terminado de golpe demasiadas veces; no se vuelve a abrir");
                               return may;
                           },
                       .open = [&processes](const std::string& path) { processes.open(path); },
                       .exit = [&ended] { ended.release(); }});
    Subscription terminated;
    loop.post([&] {
        terminated = loop.watchReadable(termination.get(), [&] {
            terminated.reset();
            ended.release();
        });
        watchdog.start(*told);
    });
    ended.acquire();
    loop.stop();
    return 0;
}

}  // namespace dorix
