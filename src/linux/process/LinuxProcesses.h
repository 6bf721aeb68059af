#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/process/ChildProcesses.h"
#include "platform/Processes.h"

#include <filesystem>
#include <string>
#include <vector>

namespace dorix {

/// Starts this program's executable, and watches processes by their descriptors. The program is known by the
/// desktop entry that was installed with it, and by its path where there is none, as in a build tree. The
/// thread of `watcher`, which must outlive it.
class LinuxProcesses final : public Processes {
 public:
    /// Of this process. Made early: an executable that is replaced while it runs loses its path.
    explicit LinuxProcesses(FdWatcher& watcher);
    LinuxProcesses(FdWatcher& watcher, std::filesystem::path executable);

    /// Where this program lies.
    const std::filesystem::path& executable() const { return executable_; }

    /// What the next launchSelf() gives to the other process, as inheritedDescriptor.
    void passOn(FileDescriptor descriptor) { passedOn_ = std::move(descriptor); }

    std::int32_t ownProcessIdentifier() const override;
    std::string bundlePath() const override;
    Terminate launchSelf(const std::vector<std::string>& arguments) override;
    bool open(const std::string& bundlePath) override;
    Subscription watchParentExit(std::int32_t parent, std::function<void()> onExit) override;

 private:
    FdWatcher& watcher_;
    const std::filesystem::path executable_;
    FileDescriptor passedOn_;
    ReapedChildren children_;
};

/// The command that starts the application at `bundlePath`: an executable, or a desktop entry. Empty when the
/// entry cannot be read or has none.
std::vector<std::string> openCommand(const std::filesystem::path& bundlePath);

/// Starts the application at `bundlePath` from a process that is about to end and waits for nobody. Whether
/// it could be started.
bool openApplication(const std::filesystem::path& bundlePath);

/// Opens addresses by xdg-open, which knows how every desktop wants it done.
class XdgUrlOpener final : public UrlOpener {
 public:
    explicit XdgUrlOpener(FdWatcher& watcher) : children_(watcher) {}

    bool open(const std::string& url) override;

 private:
    ReapedChildren children_;
};

}  // namespace dorix
