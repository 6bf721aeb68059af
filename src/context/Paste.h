#pragma once

#include "base/async/Task.h"
#include "platform/InputEvents.h"
#include "platform/Pasteboard.h"
#include "platform/Workspace.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace dorix {

class UserClipboard;

/// A text for another application.
struct Insertion {
    std::string text;
    /// What is typed before it, asked for when its turn has come; of no use on the clipboard.
    std::function<std::string()> lead = [] { return std::string(); };
    /// Where it belongs; whatever is in front when its turn comes, if that cannot be said.
    std::optional<RunningApplication> target;
    /// False where there seems to be nothing to type in: the text is left on the clipboard as well.
    bool hasCursor = true;
    /// False where it must not be typed after all: the text is left on the clipboard and nowhere else.
    bool isTyped = true;
    /// No clipboard manager is to keep it, also when it is left on the clipboard.
    bool isSecret = false;
};

/// What became of it.
struct InsertionReceipt {
    enum class Delivery {
        refused,    // nothing may be typed now, or the clipboard could not be had
        delivered,  // the application has fetched it
        untaken,    // the application did not ask for it
        elsewhere,  // its application is not in front any more
        nowhere,    // no application is in front
    };

    Delivery delivery = Delivery::refused;
    /// The text stays there for the user to paste.
    bool isOnClipboard = false;
    /// How much is known of what the user had on the clipboard, which comes back unless the text stays.
    Pasteboard::Reading::State clipboard = Pasteboard::Reading::State::empty;

    bool operator==(const InsertionReceipt&) const = default;
};

/// One insertion by way of the clipboard, while that is borrowed. The application is told to paste only while
/// it is in front and the text is on the clipboard, and the text counts as delivered when it has asked for
/// it. Main executor.
class Paste {
 public:
    /// All outlive it.
    struct Means {
        Executor& executor;
        UserClipboard& clipboard;
        Pasteboard& pasteboard;
        EventPoster& poster;
        Workspace& workspace;
    };

    Paste(const Means& means, Insertion insertion, EventPoster::Condition mayType);

    /// Returns when it is known what becomes of the text. A text that was not delivered is on the clipboard
    /// by then, unless it was refused or the user is using the clipboard.
    Task<InsertionReceipt> deliver();

    /// After that: the clipboard is as it was, or as the user has made it since, unless the text stays.
    Task<void> giveBack();

 private:
    using Delivery = InsertionReceipt::Delivery;

    Task<std::optional<RunningApplication>> placeInFront();
    bool isOwn(const std::optional<RunningApplication>& app) const;
    Task<Delivery> paste(RunningApplication target);
    Task<bool> take();
    Task<bool> strike(const RunningApplication& target);
    Delivery reasonAgainst(const RunningApplication& target) const;
    Task<std::optional<Delivery>> awaitFetch();
    Task<bool> isStillOurs();
    void offer(bool isPassing);

    const Means means_;
    const Insertion insertion_;
    const EventPoster::Condition mayType_;
    Pasteboard::Reading before_;
    std::string offered_;  // what was put on the clipboard last
    Delivery delivery_ = Delivery::refused;
    std::int64_t known_ = 0;   // the clipboard's count when this began, and then since the text is there
    bool isOffered_ = false;   // the text has been there
    bool userCopied_ = false;  // something else, since this began
    bool stays_ = false;       // the text, on the clipboard
    std::optional<double> struckAt_;   // by the executor's clock
    std::optional<double> lastFetch_;  // the same, by the target
};

}  // namespace dorix
