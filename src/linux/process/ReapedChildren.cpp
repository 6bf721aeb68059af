#include "linux/process/ReapedChildren.h"

#include "linux/process/PidFd.h"

#include <sys/wait.h>

namespace dorix {

void ReapedChildren::add(pid_t child) {
    const auto entry = children_.emplace(children_.end(), child, openProcess(child), nullptr);
    if (!entry->process) return;
    entry->token = watcher_.watchReadable(entry->process.get(), [this, entry] { ended(entry); });
}

void ReapedChildren::ended(std::list<Child>::iterator child) {
    ::waitpid(child->id, nullptr, WNOHANG);
    children_.erase(child);
}

}  // namespace dorix
