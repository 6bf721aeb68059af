#pragma once

#include "linux/loop/FdWatcher.h"
#include "linux/loop/FileDescriptor.h"

#include <string>
#include <string_view>

namespace dorix {

/// Puts the lines that a child writes to its standard error into our log. Long lines are cut, and of a flood
/// only the beginning of each minute is taken, so that a child can fill neither the log nor the memory. The
/// thread of `watcher`, which must outlive it.
class ChildLog {
 public:
    /// `component` is who says it in the log; must last.
    ChildLog(FdWatcher& watcher, FileDescriptor reading, std::string_view component);
    ChildLog(const ChildLog&) = delete;
    ChildLog& operator=(const ChildLog&) = delete;

    /// Takes what has been written by now, the last line also without its end: to be called when the child
    /// has ended. Never waits.
    void finish();

 private:
    bool readSome();
    void take(std::string_view bytes);
    void write();

    const FileDescriptor reading_;
    const std::string_view component_;
    std::string line_;
    int lines_ = 0;  // of this minute
    double minute_ = 0;
    Subscription readable_;
};

}  // namespace dorix
