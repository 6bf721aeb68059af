#pragma once

#include "linux/FdWatcher.h"
#include "platform/DesktopAppearance.h"

#include <filesystem>
#include <string>

struct sd_bus_message;

namespace dorix {

class BusConnection;

/// The look that the desktop was set to: what the settings portal says, and from the start until it has
/// answered, or where there is none, GTK's settings file, which is watched. Main executor; nothing blocks.
class LinuxAppearance final : public DesktopAppearance {
 public:
    /// `bus` is the session's, nullptr where there is none; `configHome` the user's folder for configuration.
    /// Bus and watcher must outlive the object, which must not outlive the loop that feeds them.
    LinuxAppearance(BusConnection* bus, FdWatcher& watcher, std::filesystem::path configHome);
    ~LinuxAppearance() override;

 private:
    void readFile();
    void watchFile(FdWatcher& watcher);
    void read(const char* group, const char* key);
    void take(const std::string& group, const std::string& key, sd_bus_message* value);

    const std::filesystem::path folder_;
    BusConnection* const bus_;
    bool portalKnowsTheme_ = false;
    bool portalKnowsMotion_ = false;
    int inotify_ = -1;
    FdWatcher::Token watch_;
};

}  // namespace dorix
