#pragma once

#include "base/Observable.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace dorix {

/// This program's process, others like it, and their end. Main executor. What is started gets our
/// environment, none of our open files, and the null device for input and output.
class Processes {
 public:
    /// Asks a process that was started here to end. Nothing happens if it has ended; letting go of this lets
    /// it run on.
    using Terminate = std::move_only_function<void()>;

    virtual ~Processes() = default;

    virtual std::int32_t ownProcessIdentifier() const = 0;

    /// What `open` knows this application by: as it is installed, or its executable.
    virtual std::string bundlePath() const = 0;

    /// Starts the same executable with these arguments, as a helper of this process; returns as soon as the
    /// new one is there. Empty when it cannot be started.
    virtual Terminate launchSelf(const std::vector<std::string>& arguments) = 0;

    /// Starts the application at `bundlePath`, on its own: it outlives this process. Whether it could be
    /// started.
    virtual bool open(const std::string& bundlePath) = 0;

    /// Calls `onExit` once when the process that started this one has ended, however it did, never inside
    /// this call; letting go of the watch ends it, also inside the call. Empty when `parent` is not that
    /// process, or no more, or cannot be watched.
    virtual Subscription watchParentExit(std::int32_t parent, std::function<void()> onExit) = 0;
};

/// Opens addresses in the application that the user has chosen for them. Main executor; returns at once.
class UrlOpener {
 public:
    virtual ~UrlOpener() = default;

    /// Whether the address could be handed over; not whether anything is shown. What has no scheme is
    /// refused.
    virtual bool open(const std::string& url) = 0;
};

/// The end of the program. Main executor; both return at once, and the main loop ends soon after.
class Application {
 public:
    virtual ~Application() = default;

    /// Quits in good order.
    virtual void terminate() = 0;

    /// Quits, and starts the program again when nothing is left of this one: the keys, the display and the
    /// name on the bus are one program's at a time. It ends for good if it cannot be started.
    virtual void relaunch() = 0;
};

}  // namespace dorix
