#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/process/ReapedChildren.h"
#include "platform/ProgramLauncher.h"

#include <filesystem>
#include <string>
#include <vector>

namespace dorix {

/// Starts this program's executable. It is known by the desktop entry that was installed with it, and by its
/// path where there is none, as in a build tree.
class LinuxProgramLauncher final : public ProgramLauncher {
 public:
    /// Of this process. Made early: an executable that is replaced while it runs loses its path.
    explicit LinuxProgramLauncher(FdWatcher& watcher);
    LinuxProgramLauncher(FdWatcher& watcher, std::filesystem::path executable);

    std::int32_t ownProcessIdentifier() const override;
    std::string bundlePath() const override;
    std::unique_ptr<ChildProcess> launchSelf(const std::vector<std::string>& arguments) override;
    bool open(const std::string& bundlePath) override;

 private:
    const std::filesystem::path executable_;
    ReapedChildren children_;
};

/// The command that starts the application at `bundlePath`: an executable, or a desktop entry. Empty when the
/// entry cannot be read or has none.
std::vector<std::string> openCommand(const std::filesystem::path& bundlePath);

/// Starts the application at `bundlePath` from a process that is about to end and waits for nobody. Whether
/// it could be started.
bool openApplication(const std::filesystem::path& bundlePath);

}  // namespace dorix
