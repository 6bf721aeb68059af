#include "base/Log.h"
#include "base/async/TaskScope.h"
#include "linux/desktop/LinuxDesktop.h"
#include "linux/log/JournalLog.h"
#include "linux/qt/QtMainLoop.h"
#include "localdata/Language.h"
#include "shell/AppController.h"
#include "shell/icon/IconLook.h"
#include "views/Application.h"
#include "views/Views.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <memory>
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

std::vector<MenuItem> iconMenu(SettingsStore& settings) {
    const bool paused = settings.paused.get();
    return {{.label = tr(paused ? "Reanudar DORIX" : "Pausar DORIX"),
             .handler = [&settings, paused] { settings.paused.set(!paused); }},
            {.separator = true},
            {.label = tr("Salir de DORIX"), .handler = [] { std::raise(SIGTERM); }}};
}

/// The windows, where there is a display to draw on.
std::unique_ptr<Views> makeViews(AppController& controller, const Platform& platform, LinuxDesktop& desktop) {
    if (!canDraw()) return nullptr;
    return std::make_unique<Views>(
        Views::Environment{.executor = platform.executor,
                           .defaults = platform.defaults,
                           .state = controller.state(),
                           .settings = controller.settings(),
                           .speech = controller.speech(),
                           .appearance = desktop.appearance()},
        Views::Verbs{.iconTooltip = [] { return iconTooltip({}); },
                     .iconMenu = [&controller] { return iconMenu(controller.settings()); }});
}

}  // namespace

int main(int argc, char** argv) {
    const int signals = blockedTerminationSignals();
    std::signal(SIGPIPE, SIG_IGN);  // a peer that goes shows in the write to it
    logToStderrAndJournal();
    const auto application = makeApplication(argc, argv);
    QtMainLoop loop;
    LinuxDesktop desktop(loop, loop);
    const auto platform = desktop.platform();
    installLanguage(platform.defaults, platform.languages);

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
        const auto views = makeViews(controller, platform, desktop);
        if (views) views->showIcon();
        controller.applicationDidFinishLaunching();
        status = QCoreApplication::exec();
    }
    uninstallLanguage();
    return status;
}
