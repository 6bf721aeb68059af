#include "context/UserClipboard.h"

#include "base/async/Sleep.h"

#include <utility>

namespace dorix {

namespace {

/// How often contents that change under the reading are read before the last reading has to do.
constexpr int maxReadings = 5;

/// Seconds that an application which did not tell everything is left alone before it is asked again.
constexpr double askAgain = 0.5;

bool isWhole(const Pasteboard::Reading& reading) {
    using enum Pasteboard::Reading::State;
    return reading.state == complete || reading.state == empty;
}

}  // namespace

void UserClipboard::prepare() {
    ahead_ = std::make_shared<Ahead>();
    tasks_.spawn(readAhead(ahead_));
}

Task<void> UserClipboard::readAhead(std::shared_ptr<Ahead> ahead) {
    while (ahead_ == ahead) {
        ahead->isRead = {};
        ahead->changeCount = pasteboard_.changeCount();
        ahead->reading = co_await readNow();
        ahead->isRead.complete();
        if (isWhole(ahead->reading)) co_return;
        co_await sleep(askAgain);
    }
}

Task<UserClipboard::Reading> UserClipboard::read() {
    const auto ahead = std::exchange(ahead_, nullptr);
    if (ahead && ahead->changeCount == pasteboard_.changeCount()) {
        const bool isFresh = !ahead->isRead.isDone();
        co_await ahead->isRead.throughStop();
        const bool isTrue = ahead->changeCount == pasteboard_.currentChangeCount();
        if (isTrue && (isFresh || isWhole(ahead->reading))) co_return std::move(ahead->reading);
    }
    co_return co_await readNow();
}

Task<UserClipboard::Reading> UserClipboard::readNow() {
    Reading reading;
    for (int i = 0; i < maxReadings; ++i) {
        const auto before = pasteboard_.changeCount();
        reading = co_await pasteboard_.pasteboardItems();
        if (pasteboard_.currentChangeCount() == before) break;
    }
    if (!reading.items.empty()) pasteboard_.keepThroughCrash(reading.items);
    co_return reading;
}

void UserClipboard::restore(Reading reading) {
    pasteboard_.clearContents();
    if (!reading.items.empty()) pasteboard_.writeObjects(std::move(reading.items));
}

}  // namespace dorix
