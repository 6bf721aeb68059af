#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"

#include <sys/types.h>

#include <list>

namespace dorix {

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
        FdWatcher::Token token;  // goes before the descriptor
    };

    void ended(std::list<Child>::iterator child);

    FdWatcher& watcher_;
    std::list<Child> children_;
};

}  // namespace dorix
