#pragma once

#include "base/async/Completion.h"
#include "base/async/Timer.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"

#include <cstddef>
#include <limits>
#include <optional>
#include <utility>
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
    static constexpr std::size_t noLimit = std::numeric_limits<std::size_t>::max();

    /// Asks the owner, which has `firstAnswer` seconds to say something. `deadline` is in the executor's
    /// time. What has more than `maxBytes` is not taken.
    X11SelectionRead(X11Connection& connection, xcb_atom_t selection, xcb_atom_t target, double deadline,
                     double firstAnswer = patience, std::size_t maxBytes = noLimit);
    ~X11SelectionRead();
    X11SelectionRead(const X11SelectionRead&) = delete;
    X11SelectionRead& operator=(const X11SelectionRead&) = delete;

    const Completion<Result>& result() const& { return result_; }
    /// For the only one who waits, which gets the data without a copy.
    Completion<Result>&& result() && { return std::move(result_); }

    /// Ends it without data.
    void abandon() { finish(End::abandoned); }

    /// Whether it ended because the owner was silent for too long.
    bool timedOut() const { return end_ == End::silence; }
    /// Whether the owner has said that it has no such thing.
    bool wasRefused() const { return end_ == End::refusal; }

 private:
    void handleNotify(const xcb_selection_notify_event_t& event);
    void handleProperty(const xcb_property_notify_event_t& event);
    Result takeProperty();
    void awaitOwner(double seconds);
    enum class End { data, refusal, silence, tooLarge, abandoned };
    void finish(End end, Result result = std::nullopt);

    X11Connection& connection_;
    const xcb_window_t window_;
    const xcb_atom_t property_;
    const double deadline_;
    const std::size_t maxBytes_;
    Completion<Result> result_;
    Result pieces_;
    End end_ = End::abandoned;
    Timer silence_;
    std::vector<Subscription> tokens_;
};

}  // namespace dorix
