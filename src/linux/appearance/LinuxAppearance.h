#pragma once

#include "linux/appearance/GtkSettings.h"
#include "linux/loop/FdWatcher.h"
#include "platform/DesktopAppearance.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>

struct sd_bus_message;

namespace dorix {

class BusConnection;

/// The look that the desktop was set to: what the settings portal says, where it has an opinion; else what
/// the display's settings service says; else GTK's settings file, which is watched. Main executor; nothing
/// blocks.
class LinuxAppearance final : public DesktopAppearance {
 public:
    /// `bus` is the session's, nullptr where there is none; `configHome` the user's folder for configuration.
    /// Bus and watcher must outlive the object, which must not outlive the loop that feeds them.
    LinuxAppearance(BusConnection* bus, FdWatcher& watcher, const std::filesystem::path& configHome);
    ~LinuxAppearance() override;

    /// What the display's settings service says, by the service's names; nothing where there is none.
    void setDisplaySettings(const std::map<std::string, std::string, std::less<>>& told);

 private:
    /// What one source says of the look; none where it says nothing.
    struct Opinion {
        std::optional<bool> prefersDark;
        std::optional<bool> reducesMotion;
    };

    void update();
    void readFile();
    void watchFile(FdWatcher& watcher);
    void read(const char* group, const char* key);
    void take(const std::string& group, const std::string& key, sd_bus_message* value);

    const std::filesystem::path folder_;
    BusConnection* const bus_;
    Opinion portal_;
    Opinion display_;
    GtkLook file_;
    int inotify_ = -1;
    FdWatcher::Token watch_;
};

}  // namespace dorix
