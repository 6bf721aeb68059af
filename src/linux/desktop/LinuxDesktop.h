#pragma once

#include "base/async/Executor.h"
#include "base/async/Task.h"
#include "linux/loop/FdWatcher.h"
#include "platform/DesktopAppearance.h"
#include "platform/Platform.h"
#include "platform/WindowSystem.h"

#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace dorix {

/// Every adapter that the program uses on a Linux desktop, put together. What the session does not have is
/// there in its unavailable form, so that the program runs with the rest. Main executor.
class LinuxDesktop {
 public:
    /// How this desktop says a text of the interface.
    using Words = std::function<std::string(std::string_view)>;

    /// Starts to connect to everything, in the background but for the display. Both outlive it. What is shown
    /// by others for us goes through `words`.
    LinuxDesktop(Executor& executor, FdWatcher& watcher, Words words);
    ~LinuxDesktop();
    LinuxDesktop(const LinuxDesktop&) = delete;
    LinuxDesktop& operator=(const LinuxDesktop&) = delete;

    /// Refers to what this object owns, and to the application, whose main loop is not ours.
    Platform platform(Application& application);

    /// The display that the program's windows stand on, where their toolkit draws on the same one;
    /// `finishToolkitRequests` is then as that of the adapter. Once.
    WindowSystem& windowSystem(std::function<void()> finishToolkitRequests);

    /// How the user wants programs to look.
    DesktopAppearance& appearance();

    /// Called once when the display that the program was started on goes away.
    void onDisplayLost(std::function<void()> callback);

    /// Gives what we hold of the user's clipboard to a clipboard manager, if there is one; otherwise it ends
    /// with the program. Takes a second at most.
    Task<void> handOverClipboard();

 private:
    struct Adapters;
    std::unique_ptr<Adapters> adapters_;
};

}  // namespace dorix
