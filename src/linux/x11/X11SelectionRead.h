#pragma once

#include "base/async/Completion.h"
#include "base/async/Timer.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"

#include <optional>
#include <vector>

namespace dorix {

/// One conversion of a selection that another application owns. Ends without data when the owner refuses,
/// falls silent or passes the deadline. Each has a window of its own, so that an answer that comes late finds
/// nobody and is not taken for another's. Main executor; destroying it calls the conversion off.
class X11SelectionRead {
 public:
    /// Of type XCB_ATOM_NONE when the owner agreed and gave nothing, as some targets that are commands do.
    using Result = std::optional<SelectionData>;

    /// How long an owner at work on a target, or on the next piece of it, may be silent.
    static constexpr double patience = 2.0;

    /// Asks the owner, which has `firstAnswer` seconds to say something. `deadline` is in the executor's
    /// time.
    X11SelectionRead(X11Connection& connection, xcb_atom_t selection, xcb_atom_t target, double deadline,
                     double firstAnswer = patience);
    ~X11SelectionRead();
    X11SelectionRead(const X11SelectionRead&) = delete;
    X11SelectionRead& operator=(const X11SelectionRead&) = delete;

    const Completion<Result>& result() const { return result_; }

    /// Ends it without data.
    void abandon() { finish(std::nullopt); }

    /// Whether it ended because the owner was silent for too long.
    bool timedOut() const { return timedOut_; }

 private:
    void handleNotify(const xcb_selection_notify_event_t& event);
    void handleProperty(const xcb_property_notify_event_t& event);
    Result takeProperty();
    void awaitOwner(double seconds);
    void finish(Result result);

    X11Connection& connection_;
    const xcb_window_t window_;
    const xcb_atom_t property_;
    const double deadline_;
    Completion<Result> result_;
    Result pieces_;
    bool timedOut_ = false;
    Timer silence_;
    std::vector<Subscription> tokens_;
};

}  // namespace dorix
