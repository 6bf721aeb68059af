#pragma once

#include "base/async/Timer.h"
#include "linux/keeper/ClipboardKeeper.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"
#include "linux/x11/X11SelectionOwner.h"
#include "linux/x11/X11SelectionRead.h"
#include "linux/x11/X11Windows.h"
#include "platform/Pasteboard.h"

#include <memory>
#include <set>

namespace dorix {

/// The CLIPBOARD selection. It holds at most one item, whose types are the targets that its owner offers,
/// with the property's type and format where they matter. Its tasks must have ended before it is destroyed.
///
/// Reading a whole clipboard takes at most five seconds and 256 MiB, and the plain text at most one second;
/// what has not come by then is left out. An owner that has answered may take two seconds for each target;
/// one that has yet to answer, or was silent at the last target, a fraction of one.
class X11Pasteboard final : public Pasteboard {
 public:
    /// `keeper` gets what is to outlive the program; null for none.
    explicit X11Pasteboard(X11Connection& connection, ClipboardKeeper* keeper = nullptr);
    ~X11Pasteboard() override;

    std::int64_t changeCount() const override { return changeCount_; }
    std::int64_t currentChangeCount() override;
    Task<Reading> pasteboardItems() override;
    Task<std::optional<std::string>> string() override;
    void clearContents() override;
    void setString(std::string text) override;
    void setData(Bytes data, std::string_view type) override;
    void writeObjects(std::vector<Item> items) override;
    bool holdsOwnContents() override;
    Subscription observeFetches(std::function<void(const Fetch&)> observer) override {
        return fetches_.add(std::move(observer));
    }
    void keepThroughCrash(const std::vector<Item>& items) override;

    /// Writing takes the clipboard at the end of the executor's turn, so that other applications see it
    /// complete. This does it now.
    void commit();

    /// Offers what is on the clipboard as the PRIMARY selection too, for a terminal that pastes only that;
    /// the task ends when it does. It is fetched like the clipboard. Ends when the clipboard changes, or
    /// after some seconds, and then offers what was selected before, as far as its owner told in a fraction
    /// of a second. Does nothing unless the clipboard is ours.
    Task<void> servePrimaryForPaste();
    /// Whether that is what every application sees as PRIMARY at this moment.
    bool holdsPrimary();

    /// Asks the clipboard manager to take over what we hold, which is otherwise gone when the program ends.
    /// True when it did; at once, or after a second at most. Passing contents are not handed over.
    Task<bool> handOver();

 private:
    void handleChange(const xcb_generic_event_t& event);
    bool isForeignChange(const xcb_generic_event_t& event) const;
    bool isSettled(const xcb_generic_event_t& event) const;
    void noteForeignChange();
    void loseClipboard();
    void settle(xcb_window_t expected);
    void scheduleCommit();
    Task<void> keepPrimary();
    void endPrimary();
    bool isMark(xcb_atom_t target);
    bool isPassing();
    void keepContents();
    void put(std::string_view target, std::string_view type, std::uint8_t format, std::string bytes);
    struct Budget {
        double deadline;  // in the executor's time
        std::size_t bytes = X11SelectionRead::noLimit;
    };
    /// What of a reading could not be had.
    enum class Lost { nothing, something };

    xcb_window_t ownerOf(xcb_atom_t selection);
    void noteDelivery(const X11SelectionServer::Delivery& delivery, double at);
    Task<X11SelectionRead::Result> read(xcb_atom_t target, Budget budget, Lost& lost);
    void noteFailure(xcb_atom_t target);
    Task<Reading> readOwner(Budget budget);
    Task<std::vector<xcb_atom_t>> readTargets(Budget budget, Lost& lost);
    Item ownItem();

    X11Connection& connection_;
    ClipboardKeeper* const keeper_;
    const xcb_window_t window_;
    const xcb_atom_t clipboard_;
    X11Windows windows_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    X11SelectionOwner owner_;
    SelectionContents contents_;
    std::set<X11SelectionRead*> reads_;
    Observers<Fetch> fetches_;
    std::uint64_t offered_ = 0;         // the number of what the owner was given last
    std::uint64_t offeredPrimary_ = 0;  // the same
    std::int64_t changeCount_ = 0;
    /// The last change was ours; contents_ are what the clipboard holds or will when committed.
    bool owns_ = false;
    /// Whether contents_ have yet to be put on the clipboard; gone with this.
    std::shared_ptr<bool> commitPending_;
    /// The number of the request that told who has the clipboard after our last change: events before it are
    /// taken into account.
    std::optional<std::uint32_t> settledBefore_;
    /// The clipboard's present owner answered the last time it was asked.
    bool ownerAnswers_ = false;
    /// It has failed to, and the log says so.
    bool ownerFailed_ = false;
    bool servesPrimary_ = false;
    /// What the user had selected before we took PRIMARY.
    SelectionContents primaryBefore_;
    Timer primaryTimer_;
    std::uint8_t changeEvent_ = 0;  // the type of the events that tell of changes
    std::vector<Subscription> tokens_;
};

}  // namespace dorix
