#pragma once

#include "linux/dbus/PortalFileChooser.h"
#include "platform/UserFiles.h"

namespace dorix {

/// The desktop's own dialog for a folder. Main executor. A portal of before 2021 shows files as well.
class PortalFolderPanel final : public FolderPanel {
 public:
    /// `chooser` must outlive this.
    explicit PortalFolderPanel(PortalFileChooser& chooser) : chooser_(chooser) {}

    Task<Answer> run(Request request) override;

 private:
    PortalFileChooser& chooser_;
};

}  // namespace dorix
