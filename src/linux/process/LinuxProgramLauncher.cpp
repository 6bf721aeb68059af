#include "linux/process/LinuxProgramLauncher.h"

#include "linux/apps/DesktopEntry.h"
#include "linux/process/PidFd.h"
#include "linux/process/Spawn.h"
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

class LinuxChildProcess final : public ChildProcess {
 public:
    explicit LinuxChildProcess(FileDescriptor process) : process_(std::move(process)) {}

    /// By the descriptor: the id may be another process's by now.
    void terminate() override { ::syscall(SYS_pidfd_send_signal, process_.get(), SIGTERM, nullptr, 0); }

 private:
    FileDescriptor process_;
};

fs::path ownExecutable() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error);
}

}  // namespace

LinuxProgramLauncher::LinuxProgramLauncher(FdWatcher& watcher)
    : LinuxProgramLauncher(watcher, ownExecutable()) {}

LinuxProgramLauncher::LinuxProgramLauncher(FdWatcher& watcher, fs::path executable)
    : executable_(std::move(executable)), children_(watcher) {}

std::int32_t LinuxProgramLauncher::ownProcessIdentifier() const { return ::getpid(); }

std::string LinuxProgramLauncher::bundlePath() const {
    const auto entry = executable_.parent_path().parent_path() / "share" / "applications" / entryName;
    // An entry of another installation would start that one.
    const auto command = openCommand(entry);
    std::error_code error;
    const bool isOurs = !command.empty() && fs::equivalent(command.front(), executable_, error);
    return isOurs ? entry.string() : executable_.string();
}

std::unique_ptr<ChildProcess> LinuxProgramLauncher::launchSelf(const std::vector<std::string>& arguments) {
    std::vector<std::string> command{executable_.string()};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const auto child = spawn(command, SpawnAs::helper);
    if (!child) return nullptr;
    auto process = openProcess(*child);
    children_.add(*child);
    return std::make_unique<LinuxChildProcess>(std::move(process));
}

bool LinuxProgramLauncher::open(const std::string& bundlePath) {
    const auto child = spawn(openCommand(bundlePath), SpawnAs::detached);
    if (child) children_.add(*child);
    return child.has_value();
}

std::vector<std::string> openCommand(const fs::path& bundlePath) {
    if (bundlePath.extension() != ".desktop") return {bundlePath.string()};
    const auto entry = parseDesktopEntry(readFile(bundlePath).value_or(""), {});
    return entry ? parseExec(entry->exec) : std::vector<std::string>{};
}

bool openApplication(const fs::path& bundlePath) {
    return spawn(openCommand(bundlePath), SpawnAs::detached).has_value();
}

}  // namespace dorix
