#include "context/TextInsertion.h"

#include "base/async/Sleep.h"
#include "platform/InputEvents.h"
#include "platform/KeyCodes.h"

#include <utility>

namespace dorix {

namespace {

/// Seconds that the application gets to fetch the text from the clipboard.
constexpr double pasteWait = 0.45;

/// How often contents that change under the reading are read before the last reading has to do.
constexpr int maxReadings = 5;

}  // namespace

void TextInserter::postCommandKey(std::uint16_t keyCode) {
    poster_.postKeyboardEvent(keyCode, EventPoster::Direction::down, modifier::command);
    poster_.postKeyboardEvent(keyCode, EventPoster::Direction::up, modifier::command);
}

void TextInserter::prepare() { prepared_ = Prepared{pasteboard_.changeCount(), tasks_.spawn(read())}; }

/// The reading that was begun ahead, if it tells what is on the clipboard now.
std::optional<TaskHandle<TextInserter::Snapshot>> TextInserter::takePrepared() {
    const auto prepared = std::exchange(prepared_, std::nullopt);
    if (!prepared || prepared->changeCount != pasteboard_.changeCount()) return std::nullopt;
    return prepared->reading;
}

Task<TextInserter::Snapshot> TextInserter::snapshot() {
    if (const auto reading = takePrepared()) {
        const auto count = pasteboard_.changeCount();
        auto items = co_await reading->throughStop();
        if (pasteboard_.changeCount() == count) co_return items;
    }
    co_return co_await read();
}

Task<TextInserter::Snapshot> TextInserter::read() {
    Snapshot items;
    for (int reading = 0; reading < maxReadings; ++reading) {
        const auto before = pasteboard_.changeCount();
        items = co_await pasteboard_.pasteboardItems();
        if (pasteboard_.changeCount() == before) break;
    }
    co_return items;
}

void TextInserter::restore(Snapshot snapshot) {
    pasteboard_.clearContents();
    if (!snapshot.empty()) pasteboard_.writeObjects(std::move(snapshot));
}

Task<void> TextInserter::insertText(std::string text, bool restoreClipboard) {
    const auto insertion = tasks_.spawn(pasteAfter(lastInsertion_, std::move(text), restoreClipboard));
    lastInsertion_ = insertion;
    co_await insertion.throughStop();
}

Task<void> TextInserter::settled() {
    // Each waits for the one before, so that the last to begin is the last to end.
    while (lastInsertion_ && !lastInsertion_->isDone()) {
        const auto insertion = *lastInsertion_;
        co_await insertion;
    }
}

/// Two at once would take one another's text for the user's clipboard.
Task<void> TextInserter::pasteAfter(std::optional<TaskHandle<void>> previous, std::string text,
                                    bool restoreClipboard) {
    if (previous) co_await previous->throughStop();
    co_await paste(std::move(text), restoreClipboard);
}

Task<void> TextInserter::paste(std::string text, bool restoreClipboard) {
    auto before = co_await snapshot();
    pasteboard_.clearContents();
    pasteboard_.setString(text);
    pasteboard_.setData({}, Pasteboard::transientType);
    const auto ours = pasteboard_.changeCount();
    postCommandKey(keycode::v);
    co_await sleepThrough(pasteWait);
    if (pasteboard_.changeCount() != ours) co_return;
    if (restoreClipboard) {
        restore(std::move(before));
        co_return;
    }
    // Written anew, without the mark of passing contents, for clipboard managers to keep it.
    pasteboard_.clearContents();
    pasteboard_.setString(std::move(text));
}

}  // namespace dorix
