#pragma once

#include "base/async/TaskScope.h"
#include "platform/Pasteboard.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace dorix {

class EventPoster;

/// Writes into the application in front by way of the clipboard, and leaves the user's clipboard as it was.
/// Main executor. What is under way ends with it, so it lives as long as the program; so do its
/// collaborators.
class TextInserter {
 public:
    /// All that was on the clipboard.
    using Snapshot = std::vector<Pasteboard::Item>;

    TextInserter(Executor& executor, Pasteboard& pasteboard, EventPoster& poster)
        : pasteboard_(pasteboard), poster_(poster), tasks_(executor) {}

    /// Presses and lets go of the key with the command modifier. Does not wait for anything to come of it.
    void postCommandKey(std::uint16_t keyCode);

    /// What is on the clipboard when the task ends: contents that change while they are read are read again.
    Task<Snapshot> snapshot();

    /// Puts the snapshot in place of what is there; an empty one leaves nothing.
    void restore(Snapshot snapshot);

    /// Reads the clipboard ahead of an insertion that is likely to come, so that a slow application that
    /// holds it costs no time then. What was read is used if the clipboard has not changed by that time.
    void prepare();

    /// Lets go of what prepare() read: no insertion comes.
    void forgetPrepared() { prepared_.reset(); }

    /// Types `text` at the cursor of the application in front, once the insertions before it are through.
    /// Afterwards the clipboard is as it was or, when not to be restored, holds the text for the user to
    /// paste; whoever else used it meanwhile keeps it. Never fails. A stop request does not cut it short:
    /// from the first look at the clipboard on, an insertion is seen through, even when the task that asked
    /// for it is destroyed.
    Task<void> insertText(std::string text, bool restoreClipboard);

    /// Returns when no insertion is under way any more.
    Task<void> settled();

 private:
    struct Prepared {
        std::int64_t changeCount;
        TaskHandle<Snapshot> reading;
    };

    Task<Snapshot> read();
    std::optional<TaskHandle<Snapshot>> takePrepared();
    Task<void> pasteAfter(std::optional<TaskHandle<void>> previous, std::string text, bool restoreClipboard);
    Task<void> paste(std::string text, bool restoreClipboard);

    Pasteboard& pasteboard_;
    EventPoster& poster_;
    std::optional<Prepared> prepared_;
    std::optional<TaskHandle<void>> lastInsertion_;
    TaskScope tasks_;
};

}  // namespace dorix
