#pragma once

#include "base/async/TaskScope.h"
#include "base/async/Turns.h"
#include "platform/Pasteboard.h"

#include <cstdint>
#include <memory>

namespace dorix {

/// The clipboard as the user's, which others here borrow in turns and give back. Main executor; the
/// pasteboard outlives it.
class UserClipboard {
 public:
    using Reading = Pasteboard::Reading;

    UserClipboard(Executor& executor, Pasteboard& pasteboard) : pasteboard_(pasteboard), tasks_(executor) {}

    /// Waits until nobody else borrows it. Two at once would take one another's contents for the user's.
    auto borrow() { return turns_.next(); }

    /// Returns when nobody borrows it any more.
    Task<void> settled() { co_await borrow(); }

    /// Begins to read ahead of an insertion that is likely to come, so that a slow application that holds the
    /// clipboard costs no time then. One that did not tell everything is asked again until forget() or
    /// read().
    void prepare();

    /// Lets go of what prepare() read.
    void forget() { ahead_.reset(); }

    /// What is on the clipboard when the task ends: contents that change while they are read are read again.
    /// What was read ahead is used if it is all there is and nothing has changed since. A stop request does
    /// not cut it short.
    Task<Reading> read();

    /// Puts in place of what is there what was read; nothing if nothing was.
    void restore(Reading reading);

 private:
    struct Ahead {
        std::int64_t changeCount = 0;
        Reading reading;
        Completion<void> isRead;
    };

    Task<void> readAhead(std::shared_ptr<Ahead> ahead);
    Task<Reading> readNow();

    Pasteboard& pasteboard_;
    std::shared_ptr<Ahead> ahead_;
    Turns turns_;
    TaskScope tasks_;
};

}  // namespace dorix
