#pragma once

#include "base/async/Task.h"
#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"
#include "linux/process/ChildProcesses.h"

#include <string>

namespace dorix {

/// The session's speech-dispatcher: at the socket that SPEECHD_ADDRESS names ("unix_socket:PATH"), or else
/// where it is by custom. Main executor; nothing blocks.
class SpeechdServer {
 public:
    explicit SpeechdServer(FdWatcher& watcher) : watcher_(watcher), children_(watcher) {}

    /// A connection to it. One that does not run is started; it outlives this program, and ends by itself
    /// when nobody has needed it for some seconds. None where it is not installed or does not start within
    /// some seconds.
    Task<FileDescriptor> connect();

 private:
    Task<void> start(std::string socket);

    FdWatcher& watcher_;
    ReapedChildren children_;
};

}  // namespace dorix
