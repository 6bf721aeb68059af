#pragma once

#include <optional>
#include <vector>

#include "base/async/Completion.h"
#include "base/async/Timer.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"

namespace dorix {

/// One conversion of a selection that another application owns. Ends without data when the owner refuses,
/// falls silent or passes the deadline. Each has a window of its own, so that an answer that comes late finds
/// nobody and is not taken for another's. Main executor; destroying it calls the conversion off.
class X11SelectionRead {
  public:
    /// Of type XCB_ATOM_NONE when the owner agreed and gave nothing, as some targets that are commands do.
    using Result = std::optional<SelectionData>;

    /// Asks the owner. `deadline` is in the executor's time.
    X11SelectionRead(X11Connection& connection, xcb_atom_t selection, xcb_atom_t target, double deadline);
    ~X11SelectionRead();
    X11SelectionRead(const X11SelectionRead&) = delete;
    X11SelectionRead& operator=(const X11SelectionRead&) = delete;

    const Completion<Result>& result() const { return result_; }

    /// Ends it without data.
    void abandon() { finish(std::nullopt); }

  private:
    void handleNotify(const xcb_selection_notify_event_t& event);
    void handleProperty(const xcb_property_notify_event_t& event);
    Result takeProperty();
    void awaitOwner();
    void finish(Result result);

    X11Connection& connection_;
    const xcb_window_t window_;
    const xcb_atom_t property_;
    const double deadline_;
    Completion<Result> result_;
    Result pieces_;
    Timer patience_;
    std::vector<X11Connection::Token> tokens_;
};

}  // namespace dorix
