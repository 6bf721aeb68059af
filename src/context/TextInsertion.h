#pragma once

#include "base/async/TaskScope.h"
#include "context/Paste.h"

namespace dorix {

/// Writes into other applications, one text after the other. Main executor. What is under way ends with it,
/// so it lives as long as the program; so do its means.
class TextInserter {
 public:
    explicit TextInserter(const Paste::Means& means) : means_(means), tasks_(means.executor) {}

    /// Types the text at the cursor of its application, inside this call if nothing has to be waited for:
    /// those before it, a slow holder of the clipboard, our own windows. What became of it is known at the
    /// latest some seconds after the stroke; the clipboard is given back after that. Never fails, and is seen
    /// through whoever waits for it.
    Completion<InsertionReceipt> insertText(Insertion insertion);

    /// Whether keys may be struck at all; asked before each stroke.
    std::function<bool()> mayType = [] { return true; };

 private:
    Task<void> insert(Insertion insertion, Completion<InsertionReceipt> receipt);

    const Paste::Means means_;
    TaskScope tasks_;
};

}  // namespace dorix
