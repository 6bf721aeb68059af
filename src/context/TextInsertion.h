#pragma once

#include "base/async/TaskScope.h"
#include "context/Paste.h"

namespace dorix {

/// Writes into other applications, one text after the other. Main executor. What is under way ends with it,
/// so it lives as long as the program; so do its means.
class TextInserter {
 public:
    explicit TextInserter(const Paste::Means& means) : means_(means), tasks_(means.executor) {}

    /// Types the text at the cursor of its application, once those before it are through. Returns as soon as
    /// it is known what became of it, at the latest some seconds after the stroke; the clipboard is given
    /// back after that. Never fails. A stop request does not cut it short: from the first look at the
    /// clipboard on, an insertion is seen through, even when the task that asked for it is destroyed.
    Task<InsertionReceipt> insertText(Insertion insertion);

    /// Whether keys may be struck at all; asked before each stroke.
    std::function<bool()> mayType = [] { return true; };

 private:
    Task<void> insert(Insertion insertion, Completion<InsertionReceipt> receipt);

    const Paste::Means means_;
    TaskScope tasks_;
};

}  // namespace dorix
