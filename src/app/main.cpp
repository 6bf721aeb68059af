#include "app/CommandLine.h"
#include "app/WatchdogProcess.h"
#include "base/Error.h"
#include "base/Log.h"
#include "base/async/TaskScope.h"
#include "base/async/Timeout.h"
#include "linux/dbus/DBusSingleInstance.h"
#include "linux/desktop/LinuxDesktop.h"
#include "linux/log/JournalLog.h"
#include "linux/process/BlockedSignals.h"
#include "linux/process/LinuxProcesses.h"
#include "linux/qt/QtMainLoop.h"
#include "linux/qt/ToolkitDisplay.h"
#include "localdata/Language.h"
#include "platform/Processes.h"
#include "shell/AppController.h"
#include "views/Application.h"
#include "views/DesktopWords.h"
#include "views/Views.h"
#include "watchdog/WatchdogTask.h"

#include <sys/resource.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <QCoreApplication>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace {

using namespace dorix;

// Seconds. Each part has bounds of its own; these are for when one of them fails.
constexpr double longestSettling = 20;
constexpr double longestHandOver = 3;

/// The program's main loop, as the core may end it.
class MainApplication final : public Application {
 public:
    MainApplication(Executor& loop, LinuxDesktop& desktop) : desktop_(desktop), tasks_(loop) {}

    /// Gives what has to end well before the program does.
    std::function<Task<void>()> settled;

    void terminate() override {
        if (!std::exchange(isEnding_, true)) tasks_.spawn(quit());
    }
    void relaunch() override {
        relaunches_ = true;
        terminate();
    }

    bool relaunches() const { return relaunches_; }

 private:
    Task<void> quit() {
        if (settled) co_await atMost(longestSettling, settled());
        co_await atMost(longestHandOver, desktop_.handOverClipboard());
        QCoreApplication::quit();
    }
    /// Neither a failure nor a service that does not answer keeps the program from ending.
    static Task<void> atMost(double seconds, Task<void> work) {
        try {
            co_await withTimeout(std::move(work), seconds);
        } catch (...) {
            logLine("at the end: " + describedIn(LogLanguage::english, std::current_exception()));
        }
    }

    LinuxDesktop& desktop_;
    bool isEnding_ = false;
    bool relaunches_ = false;
    TaskScope tasks_;
};

/// The windows, where there is a display to draw on.
struct Windows {
    Windows(AppController& owner, const Platform& platform, LinuxDesktop& desktop)
        : controller(owner),
          surroundings(platform.executor, platform.defaults, desktop.appearance(),
                       desktop.windowSystem(toolkitDrawsOnX11() ? finishToolkitRequests : nullptr)),
          views(surroundings, controller.state(), controller.settings(), controller.speech(),
                controller.panel(), controller.answerCard(), controller.accountForm(),
                controller.onboarding(), controller.settingsForm(),
                {.clicked = [this] { controller.iconClicked(); },
                 .tooltip = [this] { return controller.iconTooltip(); },
                 .menu = [this] { return controller.iconMenu(); }}) {
        controller.windows = views.windows();
    }
    ~Windows() { controller.windows = {}; }
    Windows(const Windows&) = delete;
    Windows& operator=(const Windows&) = delete;

    AppController& controller;
    Surroundings surroundings;
    Views views;
};

/// The watchdog over this process, while it stands on the stack of run(). The toolkit calls exit() when the
/// display goes away; that too is an end that is meant, not a crash.
WatchdogTask* endsAtExit = nullptr;

void endWatchdog() {
    if (auto* watchdog = std::exchange(endsAtExit, nullptr)) watchdog->terminate();
}

struct Ending {
    int status = 0;
    std::string openedNext;  // by its bundle path; "" for nothing
};

Ending run(int argc, char** argv) {
    const auto signals = blockedSignals({SIGINT, SIGTERM, SIGHUP});
    std::signal(SIGPIPE, SIG_IGN);  // a peer that goes shows in the write to it
    logToStderrAndJournal();
    const auto application = makeApplication(argc, argv, toolkitFindsDisplay());
    QtMainLoop loop;
    DBusSingleInstance instance(loop, loop);
    if (!instance.claim()) return {};
    LinuxDesktop desktop(loop, loop, desktopWords);
    MainApplication ending(loop, desktop);
    const auto platform = desktop.platform(ending);
    installLanguage(platform.defaults, platform.languages);

    WatchdogTask watchdog(platform.processes);
    watchdog.spawn();
    endsAtExit = &watchdog;
    std::atexit([] { endWatchdog(); });
    int status = 0;
    {
        AppController controller(platform);
        const auto watch = loop.watchReadable(signals.get(), [&] {
            signalfd_siginfo signal{};
            if (read(signals.get(), &signal, sizeof signal) == sizeof signal) ending.terminate();
        });
        desktop.onDisplayLost([] {
            logLine("the display has gone");
            QCoreApplication::exit(1);
        });
        ending.settled = [&controller] { return controller.settled(); };
        std::optional<Windows> windows;
        if (canDraw()) windows.emplace(controller, platform, desktop);
        instance.onRequests({.reopen = [&controller] { controller.reopen(); }, .action = [](const auto&) {}});
        const char* const trace = std::getenv("DORIX_TRACE");  // NOLINT(concurrency-mt-unsafe)
        if (trace != nullptr) controller.traceTo(trace);
        controller.applicationDidFinishLaunching();
        status = QCoreApplication::exec();
    }
    endWatchdog();
    uninstallLanguage();
    return {status, ending.relaunches() ? platform.processes.bundlePath() : ""};
}

/// What was said or copied must not come to lie in a file because the program died.
void leaveNoDump() {
    const rlimit none{};
    ::setrlimit(RLIMIT_CORE, &none);
}

}  // namespace

int main(int argc, char** argv) {
    leaveNoDump();
    const std::vector<std::string_view> arguments(argv, argv + argc);
    if (isWatchdog(arguments)) return runWatchdog(arguments);
    if (const auto status = answerCommandLine(arguments)) return *status;

    const auto ending = run(argc, argv);
    // Nothing of this one is left by now.
    if (!ending.openedNext.empty()) openApplication(ending.openedNext);
    return ending.status;
}
