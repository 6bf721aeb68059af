#pragma once

#include "linux/dbus/BusService.h"
#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"
#include "platform/DesktopAppearance.h"

#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dorix {

/// What GTK's settings file says of the look; the desktops without a settings service write it.
struct GtkLook {
    bool prefersDark = false;
    bool reducesMotion = false;

    bool operator==(const GtkLook&) const = default;
};

/// Whether a theme of that name is one of those that are dark.
bool isDarkGtkTheme(std::string_view name);

/// `text` is the content of a settings.ini. What it does not say is light, with motion.
GtkLook parseGtkSettings(std::string_view text);

/// The look that the desktop was set to: what the settings portal says, where it has an opinion; else what
/// the display's settings service says; else GTK's settings file, which is watched. Main executor; nothing
/// blocks.
class LinuxAppearance final : public DesktopAppearance {
 public:
    /// `bus` is the session's, `configHome` the user's folder for configuration.
    /// Bus and watcher must outlive the object, which must not outlive the loop that feeds them.
    LinuxAppearance(BusConnection& bus, FdWatcher& watcher, const std::filesystem::path& configHome);

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
    void portalChanged();
    void read(const char* group, const char* key);
    void take(const std::string& group, const std::string& key, sd_bus_message* value);

    const std::filesystem::path folder_;
    BusConnection& bus_;
    Opinion told_;  // by the portal
    Opinion display_;
    GtkLook file_;
    const FileDescriptor changes_;  // in the folder of the settings file
    Subscription watch_;
    BusService portal_;
    std::vector<Subscription> answers_;
    Subscription portalChanges_;
};

}  // namespace dorix
