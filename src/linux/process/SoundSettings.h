#pragma once

#include "linux/process/ChildProcesses.h"

namespace dorix {

/// The program in which the user chooses a microphone: that of the desktop in use, or else one that there is.
/// Main executor.
class SoundSettings {
 public:
    explicit SoundSettings(FdWatcher& watcher) : children_(watcher) {}

    /// Starts it, on its own; false where none is known or it cannot be started.
    bool open();

 private:
    ReapedChildren children_;
};

}  // namespace dorix
