#pragma once

#include "linux/loop/FileDescriptor.h"
#include "platform/Pasteboard.h"

#include <optional>
#include <string_view>
#include <utility>
#include <vector>

namespace dorix {

/// Lays down with another process, in memory alone, what is to be on the clipboard if this one dies: the
/// display keeps nothing of a program that is gone. Each end is one process's; one thread each.
class ClipboardKeeper {
 public:
    /// Types and bytes of one item, which stay the caller's.
    using Entries = std::vector<std::pair<std::string_view, std::string_view>>;

    ClipboardKeeper();

    /// The end of the process that keeps, for it to inherit and for nobody else to hold. Once.
    FileDescriptor takeOtherEnd() { return std::move(theirs_); }

    /// In place of what was kept before. Copies the bytes once, and does not wait for the other process.
    /// Without one, nothing is kept.
    void keep(const Entries& entries);
    void forget();

 private:
    void send(int memory) const;

    FileDescriptor ours_;
    FileDescriptor theirs_;
};

/// What the other process was given to keep. Blocks for nothing.
class KeptClipboard {
 public:
    /// `end` is that of takeOtherEnd(), inherited.
    explicit KeptClipboard(FileDescriptor end) : end_(std::move(end)) {}

    int descriptor() const { return end_.get(); }

    /// Takes what has been sent; false when the sender is gone and nothing is left to be read.
    bool receive();

    /// None when nothing is kept, or it is not whole.
    std::optional<Pasteboard::Item> item() const;

 private:
    FileDescriptor end_;
    FileDescriptor memory_;
};

}  // namespace dorix
