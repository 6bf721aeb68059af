#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/process/ChildProcesses.h"
#include "platform/HelperProcess.h"

#include <filesystem>

namespace dorix {

/// Helpers as children, each with one end of a socket pair as inheritedDescriptor. The thread of `watcher`,
/// which must outlive it, as it must its processes.
class LinuxHelperProcesses final : public HelperProcesses {
 public:
    /// `executable` is this program's: helpers lie beside it, or where a build leaves them.
    LinuxHelperProcesses(FdWatcher& watcher, std::filesystem::path executable)
        : watcher_(watcher), executable_(std::move(executable)), orphans_(watcher) {}

    bool isInstalled(const std::string& name) const override;
    std::unique_ptr<HelperProcess> launch(const std::string& name, Listener listener) override;

 private:
    FdWatcher& watcher_;
    const std::filesystem::path executable_;
    ReapedChildren orphans_;
};

}  // namespace dorix
