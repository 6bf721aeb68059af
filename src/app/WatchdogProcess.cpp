#include "app/WatchdogProcess.h"

#include "base/Log.h"
#include "linux/keeper/ClipboardKeeper.h"
#include "linux/log/JournalLog.h"
#include "linux/loop/PollLoop.h"
#include "linux/process/BlockedSignals.h"
#include "linux/process/ChildProcesses.h"
#include "linux/process/LinuxProcesses.h"
#include "linux/x11/X11ClipboardHeir.h"
#include "linux/xdg/Environment.h"
#include "linux/xdg/JsonUserDefaults.h"
#include "watchdog/RelaunchLimiter.h"
#include "watchdog/Watchdog.h"

#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <optional>
#include <semaphore>
#include <string>
#include <utility>

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

/// What the program left open for us; asked before anything else is opened, which would get the number.
FileDescriptor inheritedSocket() {
    struct stat status{};
    const bool isThere = ::fstat(inheritedDescriptor, &status) == 0 && S_ISSOCK(status.st_mode);
    return FileDescriptor(isThere ? inheritedDescriptor : -1);
}

/// The program's clipboard, which goes to the watchdog when the program dies.
class Inheritance {
 public:
    Inheritance(PollLoop& loop, FileDescriptor end)
        : loop_(loop),
          kept_(std::move(end)),
          incoming_(kept_.descriptor() < 0 ? Subscription()
                                           : loop.watchReadable(kept_.descriptor(), [this] { receive(); })) {}

    /// Offers what the program had, if it was to be kept.
    void programEnded() {
        receive();
        const auto item = kept_.item();
        if (item) heir_.emplace(loop_, loop_, *item, [this] { used(); });
    }

    bool isOffered() const { return heir_.has_value(); }

    /// Calls back as soon as nothing is offered, at once if nothing is.
    void whenUsed(std::function<void()> callback) {
        onUsed_ = std::move(callback);
        if (!heir_) onUsed_();
    }

 private:
    void receive() {
        if (!kept_.receive()) incoming_.reset();
    }
    void used() {
        heir_.reset();
        onUsed_();
    }

    PollLoop& loop_;
    KeptClipboard kept_;
    std::optional<X11ClipboardHeir> heir_;
    std::function<void()> onUsed_ = [] {};
    Subscription incoming_;
};

}  // namespace

int runWatchdog(std::span<const std::string_view> arguments) {
    const auto told = parseWatchdogArguments(arguments);
    if (!told) return 0;
    auto inherited = inheritedSocket();
    const auto termination = blockedSignals({SIGTERM});
    logToStderrAndJournal();
    PollLoop loop;
    LinuxProcesses processes(loop);
    std::counting_semaphore<> ended(0);
    std::optional<Inheritance> inheritance;
    Watchdog watchdog({.executor = loop,
                       .processes = processes,
                       .mayRelaunch =
                           [&loop] {
                               const bool may = mayRelaunch(loop);
                               logLine(may ? "the program has died; it is started again"
                                           : "the program has died too often; it is not started again");
                               return may;
                           },
                       .open = [&processes](const std::string& path) { processes.open(path); },
                       .parentExited = [&inheritance] { inheritance->programEnded(); },
                       .exit = [&] { inheritance->whenUsed([&ended] { ended.release(); }); }});
    Subscription terminated;
    loop.post([&] {
        inheritance.emplace(loop, std::move(inherited));
        terminated = loop.watchReadable(termination.get(), [&] {
            signalfd_siginfo signal{};
            const bool isRead = ::read(termination.get(), &signal, sizeof signal) == sizeof signal;
            if (!isRead || inheritance->isOffered()) return ended.release();
            // The program ends well; what the user had on the clipboard is not to end with it.
            watchdog.stop();
            inheritance->programEnded();
            inheritance->whenUsed([&ended] { ended.release(); });
        });
        watchdog.start(*told);
    });
    ended.acquire();
    loop.stop();
    inheritance.reset();
    return 0;
}

}  // namespace dorix
