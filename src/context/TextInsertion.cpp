#include "context/TextInsertion.h"

#include "base/Log.h"
#include "context/UserClipboard.h"

#include <exception>
#include <string>
#include <utility>

namespace dorix {

Completion<InsertionReceipt> TextInserter::insertText(Insertion insertion) {
    Completion<InsertionReceipt> receipt;
    tasks_.spawn(insert(std::move(insertion), receipt));
    return receipt;
}

Task<void> TextInserter::insert(Insertion insertion, Completion<InsertionReceipt> receipt) {
    const auto borrowed = co_await means_.clipboard.borrow();
    if (!mayType()) {
        receipt.complete();
        co_return;
    }
    Paste paste(means_, std::move(insertion), [this] { return mayType(); });
    try {
        receipt.complete(co_await paste.deliver());
        co_await paste.giveBack();
    } catch (const std::exception& error) {
        // Out of memory, with the clipboard of others: whoever waits goes on all the same.
        logLine(std::string("an insertion was not carried to its end: ") + error.what());
        receipt.complete();
    }
}

}  // namespace dorix
