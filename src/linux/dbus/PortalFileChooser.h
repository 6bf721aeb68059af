#pragma once

#include "base/async/Completion.h"
#include "base/async/Task.h"
#include "linux/dbus/BusService.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace dorix {

/// The desktop's own dialogs for files and folders, through xdg-desktop-portal. Main executor.
class PortalFileChooser {
 public:
    /// What came of a dialog.
    struct Outcome {
        bool wasShown = false;                      // false where there is no portal
        std::optional<std::filesystem::path> file;  // none when it was given up
    };

    /// On the session bus, which must outlive this.
    explicit PortalFileChooser(BusConnection& bus);

    /// A call of `method` for a dialog above that window, up to its options, which are for the caller to
    /// append: name and value each.
    sdbus::Message newCall(const char* method, std::uint64_t ownWindow, const std::string& title) const;

    /// Shows the dialog, and suspends until the user has answered.
    Task<Outcome> ask(sdbus::Message call);

 private:
    using Answer = std::optional<std::filesystem::path>;

    void responded(sd_bus_message* signal);
    void portalChanged();

    BusConnection& bus_;
    std::map<std::string, Completion<Answer>> waiting_;  // by the path of the request
    BusService portal_;
    Subscription responses_;
};

}  // namespace dorix
