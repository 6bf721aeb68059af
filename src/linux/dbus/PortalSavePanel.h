#pragma once

#include "linux/dbus/PortalFileChooser.h"
#include "platform/UserFiles.h"

#include <filesystem>
#include <string>

namespace dorix {

/// The desktop's own dialog for a file that is to be saved; where there is none, a free name in `documents`.
/// Main executor.
class PortalSavePanel final : public SavePanel {
 public:
    /// `chooser` must outlive this.
    PortalSavePanel(PortalFileChooser& chooser, std::filesystem::path documents);

    Task<std::optional<std::filesystem::path>> run(Request request) override;

 private:
    std::filesystem::path freeName(const std::string& fileName) const;

    PortalFileChooser& chooser_;
    const std::filesystem::path documents_;
};

}  // namespace dorix
