#include "linux/process/ChildProcesses.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <memory>
#include <string_view>
#include <system_error>

namespace dorix {

namespace {

/// Ours were changed for the main loop's sake, and would be inherited.
void setSignals(posix_spawnattr_t& attributes, SpawnAs as) {
    sigset_t blocked{};
    sigemptyset(&blocked);
    if (as == SpawnAs::helper) sigaddset(&blocked, SIGTERM);
    posix_spawnattr_setsigmask(&attributes, &blocked);
    sigset_t defaults{};
    sigfillset(&defaults);
    posix_spawnattr_setsigdefault(&attributes, &defaults);
}

class Attributes {
 public:
    explicit Attributes(SpawnAs as) {
        posix_spawnattr_init(&attributes_);
        setSignals(attributes_, as);
        const int group = as == SpawnAs::detached ? POSIX_SPAWN_SETSID : POSIX_SPAWN_SETPGROUP;
        const int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | group;
        posix_spawnattr_setflags(&attributes_, static_cast<short>(flags));
    }
    ~Attributes() { posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;

    const posix_spawnattr_t* get() const { return &attributes_; }

 private:
    posix_spawnattr_t attributes_{};
};

/// The null device, what is to be given to the program, and nothing else.
class Files {
 public:
    explicit Files(SpawnFiles given) {
        posix_spawn_file_actions_init(&actions_);
        for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            posix_spawn_file_actions_addopen(&actions_, fd, "/dev/null", O_RDWR, 0);
        if (given.errors >= 0) posix_spawn_file_actions_adddup2(&actions_, given.errors, STDERR_FILENO);
        const bool inherits = given.inherited >= 0;
        if (inherits) posix_spawn_file_actions_adddup2(&actions_, given.inherited, inheritedDescriptor);
        posix_spawn_file_actions_addclosefrom_np(&actions_, inheritedDescriptor + (inherits ? 1 : 0));
    }
    ~Files() { posix_spawn_file_actions_destroy(&actions_); }
    Files(const Files&) = delete;
    Files& operator=(const Files&) = delete;

    const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
    posix_spawn_file_actions_t actions_{};
};

}  // namespace

std::optional<Pipe> makePipe() {
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
    return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

std::optional<pid_t> spawn(const std::vector<std::string>& command, SpawnAs as, SpawnFiles files) {
    if (command.empty() || command.front().empty()) return std::nullopt;
    auto texts = command;
    std::vector<char*> arguments;
    arguments.reserve(texts.size() + 1);
    for (auto& text : texts) arguments.push_back(text.data());
    arguments.push_back(nullptr);
    pid_t process = -1;
    const int error = posix_spawnp(&process, arguments.front(), Files(files).get(), Attributes(as).get(),
                                   arguments.data(), environ);
    if (error != 0) return std::nullopt;
    return process;
}

std::filesystem::path programBeside(const std::filesystem::path& executable, const std::string& name) {
    constexpr std::string_view prefix = "dorix-";
    const auto folder = executable.parent_path();
    const auto room = name.starts_with(prefix) ? name.substr(prefix.size()) : name;
    const auto above = folder.parent_path();
    for (const auto& place : {above / "libexec" / "dorix" / name, folder / name, above / room / name}) {
        std::error_code error;
        if (std::filesystem::is_regular_file(place, error)) return place;
    }
    return {};
}

FileDescriptor openProcess(pid_t process) {
    return FileDescriptor(
        static_cast<int>(::syscall(SYS_pidfd_open, process, 0)));  // close-on-exec by itself
}

void ReapedChildren::add(pid_t child) {
    const auto entry = children_.emplace(children_.end(), child, openProcess(child), Subscription());
    if (!entry->process) return;
    entry->token = watcher_.watchReadable(entry->process.get(), [this, entry] { ended(entry); });
}

void ReapedChildren::ended(std::list<Child>::iterator child) {
    ::waitpid(child->id, nullptr, WNOHANG);
    children_.erase(child);
}

}  // namespace dorix
