#pragma once

#include "base/async/Executor.h"
#include "linux/FdWatcher.h"
#include "platform/DesktopAppearance.h"

#include <filesystem>
#include <memory>
#include <string>

struct sd_bus_message;

namespace dorix {

class BusConnection;

/// The look that the desktop was set to: what the settings portal says, and from the start until it has
/// answered, or where there is none, GTK's settings file, which is watched. Main executor; nothing blocks.
class LinuxAppearance final : public DesktopAppearance {
 public:
    /// `configHome` is the user's folder for configuration. Queue and watcher must outlive the object.
    LinuxAppearance(WorkQueue& queue, FdWatcher& watcher, std::filesystem::path configHome);
    ~LinuxAppearance() override;

 private:
    void readFile();
    void watchFile(FdWatcher& watcher);
    void read(const char* group, const char* key);
    void take(const std::string& group, const std::string& key, sd_bus_message* value);

    const std::filesystem::path folder_;
    std::unique_ptr<BusConnection> bus_;
    bool portalKnowsTheme_ = false;
    bool portalKnowsMotion_ = false;
    int inotify_ = -1;
    FdWatcher::Token watch_;
};

}  // namespace dorix
