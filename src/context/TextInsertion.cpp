#include "context/TextInsertion.h"

#include "context/UserClipboard.h"

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
    receipt.complete(co_await paste.deliver());
    co_await paste.giveBack();
}

}  // namespace dorix
