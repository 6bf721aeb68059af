#include "base/Log.h"
#include "base/async/TaskScope.h"
#include "linux/dbus/DBusSingleInstance.h"
#include "linux/desktop/LinuxDesktop.h"
#include "linux/log/JournalLog.h"
#include "linux/qt/QtMainLoop.h"
#include "localdata/Language.h"
#include "platform/ProgramLauncher.h"
#include "shell/AppController.h"
#include "shell/WatchdogProcess.h"
#include "shell/watchdog/WatchdogArguments.h"
#include "shell/watchdog/WatchdogTask.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <string_view>
#include <vector>

namespace {

using namespace dorix;

/// The signals that ask the program to end, as a descriptor: they are then handled on the main loop like any
/// other event. Before other threads start, so that none of them takes the signal.
int blockedTerminationSignals() {
    sigset_t signals{};
    sigemptyset(&signals);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&signals, signal);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return signalfd(-1, &signals, SFD_CLOEXEC);
}

Task<void> quit(LinuxDesktop& desktop) {
    co_await desktop.handOverClipboard();
    QCoreApplication::quit();
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string_view> arguments(argv, argv + argc);
    if (isWatchdog(arguments)) return runWatchdog(arguments);

    const int signals = blockedTerminationSignals();
    std::signal(SIGPIPE, SIG_IGN);  // a peer that goes shows in the write to it
    logToStderrAndJournal();
    const QCoreApplication application(argc, argv);
    QtMainLoop loop;
    DBusSingleInstance instance(loop, loop);
    if (!instance.claim()) return 0;
    LinuxDesktop desktop(loop, loop);
    const auto platform = desktop.platform();
    installLanguage(platform.defaults, platform.languages);

    WatchdogTask watchdog(platform.launcher);
    watchdog.spawn();
    int status = 0;
    {
        AppController controller(platform);
        TaskScope ending(loop);
        const auto watch = loop.watchReadable(signals, [&] {
            signalfd_siginfo signal{};
            if (read(signals, &signal, sizeof signal) == sizeof signal) ending.spawn(quit(desktop));
        });
        desktop.onDisplayLost([] {
            logLine("se ha perdido la pantalla");
            QCoreApplication::exit(1);
        });
        controller.applicationDidFinishLaunching();
        status = QCoreApplication::exec();
        watchdog.terminate();
    }
    uninstallLanguage();
    return status;
}
