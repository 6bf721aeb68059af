#include "linux/process/LinuxProcesses.h"

#include "base/text/Url.h"
#include "linux/apps/DesktopEntry.h"
#include "linux/process/ChildProcesses.h"
#include "linux/xdg/AtomicFile.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <csignal>
#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr const char* entryName = "es.pelmora.dorix.desktop";

struct ExitWatch {
    FileDescriptor process;
    std::function<void()> onExit;
    Subscription readable;  // goes before the descriptor
};

fs::path ownExecutable() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

}  // namespace

LinuxProcesses::LinuxProcesses(FdWatcher& watcher) : LinuxProcesses(watcher, ownExecutable()) {}

LinuxProcesses::LinuxProcesses(FdWatcher& watcher, fs::path executable)
    : watcher_(watcher), executable_(std::move(executable)), children_(watcher) {}

std::int32_t LinuxProcesses::ownProcessIdentifier() const { return ::getpid(); }

std::string LinuxProcesses::bundlePath() const {
    const auto entry = executable_.parent_path().parent_path() / "share" / "applications" / entryName;
    // An entry of another installation would start that one.
    const auto command = openCommand(entry);
    std::error_code error;
    const bool isOurs = !command.empty() && fs::equivalent(command.front(), executable_, error);
    return isOurs ? entry.string() : executable_.string();
}

Processes::Terminate LinuxProcesses::launchSelf(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{executable_.string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const auto passedOn = std::move(passedOn_);
    const auto child = spawn(command, SpawnAs::helper, {.inherited = passedOn.get()});
    if (!child) return nullptr;
    auto process = openProcess(*child);
    children_.add(*child);
    // By the descriptor: the id may be another process's by then.
    return [process = std::move(process)] {
        ::syscall(SYS_pidfd_send_signal, process.get(), SIGTERM, nullptr, 0);
    };
}

bool LinuxProcesses::open(const std::string& bundlePath) {
    const auto child = spawn(openCommand(bundlePath), SpawnAs::detached);
    if (child) children_.add(*child);
    return child.has_value();
}

Subscription LinuxProcesses::watchParentExit(std::int32_t parent, std::function<void()> onExit) {
    auto process = openProcess(parent);
    // In this order: as long as it is our parent, no other process gets its number.
    if (!process || ::getppid() != parent) return {};
    const auto watch = std::make_shared<ExitWatch>(std::move(process), std::move(onExit));
    watch->readable = watcher_.watchReadable(watch->process.get(), [weak = std::weak_ptr(watch)] {
        const auto self = weak.lock();
        if (!self) return;
        self->readable.reset();  // it stays readable
        self->onExit();
    });
    return Subscription(watch);
}

std::vector<std::string> openCommand(const fs::path& bundlePath) {
    if (bundlePath.extension() != ".desktop") return {bundlePath.string()};
    const auto entry = parseDesktopEntry(readFile(bundlePath).value_or(""), {});
    return entry ? parseExec(entry->exec) : std::vector<std::string>{};
}

bool openApplication(const fs::path& bundlePath) {
    return spawn(openCommand(bundlePath), SpawnAs::detached).has_value();
}

bool XdgUrlOpener::open(const std::string& url) {
    // A scheme also keeps what is given from being taken for an option or a file.
    if (!schemeOf(url) || url.find('\0') != std::string::npos) return false;
    const auto child = spawn({"xdg-open", url}, SpawnAs::detached);
    if (child) children_.add(*child);
    return child.has_value();
}

}  // namespace dorix
