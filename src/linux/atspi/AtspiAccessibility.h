#pragma once

#include "base/async/Executor.h"
#include "linux/loop/FdWatcher.h"
#include "platform/Accessibility.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace dorix {

class AccessibilityBus;

/// Accessibility over AT-SPI, the Linux desktop's own. Main executor.
///
/// When made it tells the session that an assistive technology runs (org.a11y.Status IsEnabled), without
/// which many toolkits keep their contents to themselves, and leaves that set at the end, as others may rely
/// on it by then. It starts the accessibility bus if need be, and follows the focus by events. Connecting
/// takes a few turns of the main loop; until then, and while there is no bus, elements give apiDisabled. A
/// bus that comes or comes back later is taken up by itself.
///
/// An application that is not on the bus gives cannotComplete. The title of its window is given all the same,
/// as the window system knows it, and so is the document that the desktop knows by that title.
class AtspiAccessibility final : public Accessibility {
 public:
    /// The title of the window of that process which is in front, if the window system knows one. Must not
    /// block on the application.
    using WindowTitle = std::function<std::optional<std::string>(std::int32_t processIdentifier)>;

    /// The file that a window of this title shows, if the desktop knows one. Must not block.
    using FileOfTitle = std::function<std::optional<std::filesystem::path>(const std::string& title)>;

    /// `executor` is the main executor, on whose thread `watcher` calls. Both outlive the elements.
    AtspiAccessibility(Executor& executor, FdWatcher& watcher, WindowTitle windowTitle,
                       FileOfTitle fileOfTitle);
    ~AtspiAccessibility() override;

    AXUIElementRef createApplication(std::int32_t processIdentifier, double budget) override;

    /// Whether other applications can be looked into at this moment, and are told that somebody does. Does
    /// not block.
    bool isAvailable() const;

    /// Has the session say again that an assistive technology runs, where that has been switched off, and
    /// looks for the bus anew. Applications take it up at once, or when they are started next.
    void switchOn();

 private:
    Executor& executor_;
    const WindowTitle windowTitle_;
    const FileOfTitle fileOfTitle_;
    const std::shared_ptr<AccessibilityBus> bus_;
};

}  // namespace dorix
