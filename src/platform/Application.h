#pragma once

namespace dorix {

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
