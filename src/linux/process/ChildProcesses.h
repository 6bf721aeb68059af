#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"

#include <sys/types.h>

#include <filesystem>
#include <list>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

enum class SpawnAs {
    /// A child in a process group of its own: Ctrl-C in the terminal is for the program alone.
    child,
    /// The same, with SIGTERM blocked, so that none is lost before the child is ready for it: it has to ask
    /// for
    /// them.
    helper,
    /// A session leader, which ends neither with this process nor with its terminal.
    detached,
};

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;
};

/// Whose ends no other program gets; none where the system has no more.
std::optional<Pipe> makePipe();

/// What a started program has open beside the null device; -1 for nothing.
struct SpawnFiles {
    int inherited = -1;  // as inheritedDescriptor
    int errors = -1;     // as its standard error
};

/// Starts `command`, looked up in the path when it has no slash, with our environment, the null device for
/// input and output, no other open file but those of `files`, and signals as a program expects them. Blocks
/// until the program is running or cannot be started: then nothing. The process is a child, and wants to be
/// waited for. Any thread.
std::optional<pid_t> spawn(const std::vector<std::string>& command, SpawnAs as, SpawnFiles files = {});

inline constexpr int inheritedDescriptor = 3;

/// Another program of ours, such as "dorix-service": where an installation puts it ("libexec/dorix" beside
/// the executable's folder), beside this one's executable, or in the folder that a build leaves it in. Empty
/// where there is none.
std::filesystem::path programBeside(const std::filesystem::path& executable, const std::string& name);

/// A descriptor that stands for a process, also when its id has been given to another one since; it can be
/// read once the process has ended. None when there is no such process or the kernel has no such descriptors.
FileDescriptor openProcess(pid_t process);

/// Waits for child processes, so that none is left behind as a zombie. The thread of `watcher`, which must
/// outlive it.
class ReapedChildren {
 public:
    explicit ReapedChildren(FdWatcher& watcher) : watcher_(watcher) {}

    /// Takes over a child that has just been started. It may outlive this object.
    void add(pid_t child);

 private:
    struct Child {
        pid_t id;
        FileDescriptor process;
        Subscription token;  // goes before the descriptor
    };

    void ended(std::list<Child>::iterator child);

    FdWatcher& watcher_;
    std::list<Child> children_;
};

}  // namespace dorix
