#include "context/Paste.h"

#include "base/async/Sleep.h"
#include "context/UserClipboard.h"
#include "platform/KeyCodes.h"

#include <algorithm>
#include <utility>

namespace dorix {

namespace {

// Seconds, all of them.

/// From the stroke to the clipboard being given back, at the least.
constexpr double pasteWait = 0.45;
/// From the last time that the application fetched the text: some ask for it more than once.
constexpr double grace = 0.2;
/// How long an application may take to ask for the text. One that is busy, with a page that loads or a file
/// that it saves, pastes late, and must then get the text and not what was on the clipboard before. Whoever
/// looks at it for longer than this no longer believes that it will answer.
constexpr double patience = 4.0;
/// How long our own windows may take to give the keyboard back.
constexpr double keyboardReturns = 0.6;
/// Whoever takes the clipboard before the text was fetched is what would be pasted until it is taken back.
constexpr double betweenLooks = 0.002;

/// How often the clipboard is taken anew from whoever takes it before the application has fetched the text.
constexpr int maxOffers = 8;

bool holds(const Pasteboard::Reading& reading, const std::string& text) {
    return std::ranges::any_of(reading.items, [&](const Pasteboard::Item& item) {
        return std::ranges::any_of(item, [&](const auto& entry) { return entry.second == text; });
    });
}

}  // namespace

Paste::Paste(const Means& means, Insertion insertion, EventPoster::Condition mayType)
    : means_(means), insertion_(std::move(insertion)), mayType_(std::move(mayType)) {}

Task<InsertionReceipt> Paste::deliver() {
    known_ = means_.pasteboard.currentChangeCount();
    if (!insertion_.isTyped) {
        delivery_ = Delivery::nowhere;
    } else if (const auto target = co_await placeInFront()) {
        delivery_ = co_await paste(*target);
    } else {
        delivery_ = insertion_.target ? Delivery::elsewhere : Delivery::nowhere;
        userCopied_ = means_.pasteboard.currentChangeCount() != known_;
    }
    stays_ = delivery_ != Delivery::refused && (delivery_ != Delivery::delivered || !insertion_.hasCursor);
    // What the user has copied meanwhile is worth more than a text that is in the history as well.
    if (delivery_ != Delivery::delivered && (userCopied_ || (isOffered_ && !co_await isStillOurs())))
        stays_ = false;
    if (stays_ && delivery_ != Delivery::delivered) offer(false);
    co_return InsertionReceipt{delivery_, stays_, before_.state};
}

/// Where the text goes, once it has the keyboard; none if that is somebody else's.
Task<std::optional<RunningApplication>> Paste::placeInFront() {
    const auto& workspace = means_.workspace;
    const double deadline = means_.executor.now() + keyboardReturns;
    const bool isForUs = isOwn(insertion_.target);
    bool asked = false;
    for (;;) {
        const auto front = workspace.frontmostApplication();
        if (front && (isForUs || !isOwn(front))) {
            const bool isPlace = !insertion_.target || workspace.isFrontmost(*insertion_.target);
            co_return isPlace ? front : std::nullopt;
        }
        // Our own windows leave, and between two windows nobody has the keyboard.
        if (means_.executor.now() >= deadline) co_return std::nullopt;
        if (front && insertion_.target && !std::exchange(asked, true))
            means_.workspace.activate(*insertion_.target);
        co_await sleepThrough(betweenLooks);
    }
}

bool Paste::isOwn(const std::optional<RunningApplication>& app) const {
    return app && app->bundleIdentifier == means_.workspace.ownBundleIdentifier();
}

Task<Paste::Delivery> Paste::paste(RunningApplication target) {
    const auto fetches = means_.pasteboard.observeFetches([this, target](const Pasteboard::Fetch& fetch) {
        const bool isAnswer = struckAt_ && fetch.at >= *struckAt_;
        if (isAnswer && means_.workspace.isSameApplication(fetch.by, target)) lastFetch_ = fetch.at;
    });
    for (int offers = 0; offers < maxOffers; ++offers) {
        if (!co_await take()) break;
        if (!struckAt_ && !co_await strike(target)) {
            // Somebody took the clipboard just before the stroke.
            if (!means_.pasteboard.holdsOwnContents()) continue;
            co_return reasonAgainst(target);
        }
        if (const auto delivery = co_await awaitFetch()) co_return *delivery;
    }
    co_return struckAt_ ? Delivery::untaken : Delivery::refused;
}

/// Puts the text on the clipboard, and keeps what it takes the place of; false if that could not be kept, or
/// the clipboard is not to be had.
Task<bool> Paste::take() {
    auto reading = co_await means_.clipboard.read();
    // What the user has only just copied is not taken away for a text that may not even be pasted.
    if (isOffered_ && reading.state == Pasteboard::Reading::State::unreadable) co_return false;
    // A clipboard manager may have taken the text itself over.
    if (!isOffered_ || !holds(reading, offered_)) {
        before_ = std::move(reading);
        userCopied_ = means_.pasteboard.changeCount() != known_;
    }
    offer(true);
    co_return true;
}

Task<bool> Paste::strike(const RunningApplication& target) {
    const auto still = [this, &target] {
        struckAt_ = means_.executor.now();
        return means_.pasteboard.holdsOwnContents() && means_.workspace.isFrontmost(target) && mayType_();
    };
    const bool isStruck = co_await means_.poster.postCommandKey(keycode::v, still);
    if (!isStruck) struckAt_.reset();
    co_return isStruck;
}

Paste::Delivery Paste::reasonAgainst(const RunningApplication& target) const {
    if (!mayType_()) return Delivery::refused;
    return means_.workspace.isFrontmost(target) ? Delivery::untaken : Delivery::elsewhere;
}

/// None if the clipboard was taken first.
Task<std::optional<Paste::Delivery>> Paste::awaitFetch() {
    const double limit = insertion_.hasCursor ? patience : pasteWait;
    while (!lastFetch_) {
        if (means_.pasteboard.changeCount() != known_) co_return std::nullopt;
        if (means_.executor.now() >= *struckAt_ + limit) co_return Delivery::untaken;
        co_await sleepThrough(betweenLooks);
    }
    co_return Delivery::delivered;
}

Task<void> Paste::giveBack() {
    if (!isOffered_) co_return;
    while (struckAt_ &&
           means_.executor.now() < std::max(*struckAt_ + pasteWait, lastFetch_.value_or(0) + grace))
        co_await sleepThrough(betweenLooks);
    if (stays_ && delivery_ != Delivery::delivered) co_return;
    if (!co_await isStillOurs()) co_return;
    if (stays_) {
        offer(false);
    } else {
        means_.clipboard.restore(std::move(before_));
    }
}

/// Whether nobody else has put anything on the clipboard, but for a clipboard manager that took the text
/// over.
Task<bool> Paste::isStillOurs() {
    // Asked of the system: we may yet have to hear of what the user has just copied.
    if (means_.pasteboard.holdsOwnContents() && means_.pasteboard.changeCount() == known_) co_return true;
    co_return co_await means_.pasteboard.string() == offered_;
}

/// Passing contents are not kept by clipboard managers.
void Paste::offer(bool isPassing) {
    means_.pasteboard.clearContents();
    offered_ = isPassing ? insertion_.lead() + insertion_.text : insertion_.text;
    means_.pasteboard.setString(offered_);
    if (isPassing || insertion_.isSecret) means_.pasteboard.setData({}, Pasteboard::transientType);
    known_ = means_.pasteboard.changeCount();
    isOffered_ = true;
}

}  // namespace dorix
