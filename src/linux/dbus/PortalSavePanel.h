#pragma once

#include "base/async/Completion.h"
#include "linux/dbus/BusService.h"
#include "platform/UserFiles.h"

#include <filesystem>
#include <map>
#include <optional>
#include <string>

namespace dorix {

/// The desktop's own dialog, through xdg-desktop-portal; without one, a free name in `documents`. Main
/// executor.
class PortalSavePanel final : public SavePanel {
 public:
    /// On the session bus, which must outlive this.
    PortalSavePanel(BusConnection& bus, std::filesystem::path documents);

    Task<std::optional<std::filesystem::path>> run(Request request) override;

 private:
    /// The user's answer: a file, or none.
    using Answer = std::optional<std::filesystem::path>;

    sdbus::Message call(const Request& request) const;
    void responded(sd_bus_message* signal);
    void portalChanged();
    std::filesystem::path freeName(const std::string& fileName) const;

    BusConnection& bus_;
    const std::filesystem::path documents_;
    std::map<std::string, Completion<Answer>> waiting_;  // by the path of the request
    BusService portal_;
    Subscription responses_;
};

}  // namespace dorix
