#pragma once

#include "linux/loop/FdWatcher.h"
#include "platform/ProcessWatcher.h"

namespace dorix {

/// Watches processes by their descriptors. The thread of `watcher`, which must outlive it.
class LinuxProcessWatcher final : public ProcessWatcher {
 public:
    explicit LinuxProcessWatcher(FdWatcher& watcher) : watcher_(watcher) {}

    Token watchExit(std::int32_t processIdentifier, std::function<void()> onExit) override;

 private:
    FdWatcher& watcher_;
};

}  // namespace dorix
