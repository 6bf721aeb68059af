#pragma once

#include <map>
#include <memory>
#include <vector>

#include "base/async/Timer.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"

namespace dorix {

/// Answers other applications that ask for the selections that one window owns. Main executor. Large data
/// goes out in pieces (INCR), to any number of requestors at once, each at its own pace; one that stops
/// asking or whose window goes is forgotten.
class X11SelectionServer {
  public:
    /// `owner` must outlive this.
    X11SelectionServer(X11Connection& connection, xcb_window_t owner);
    ~X11SelectionServer();

    /// From now on requests for `selection` are answered out of `contents`. Taking the selection is the
    /// caller's matter.
    void offer(xcb_atom_t selection, std::shared_ptr<const SelectionContents> contents);

    /// Requests are refused; transfers under way finish.
    void withdraw(xcb_atom_t selection) { offers_.erase(selection); }

    /// When the selection was taken, in the server's time.
    void setTimestamp(xcb_atom_t selection, xcb_timestamp_t time);

    std::size_t transfersUnderWay() const { return transfers_.size(); }

  private:
    struct Offer {
        std::shared_ptr<const SelectionContents> contents;
        xcb_timestamp_t time = XCB_CURRENT_TIME;
    };
    struct Destination {
        xcb_window_t window;
        xcb_atom_t property;

        auto operator<=>(const Destination&) const = default;
    };
    struct Transfer {
        Transfer(std::shared_ptr<const SelectionData> sent, Executor& executor)
            : data(std::move(sent)), patience(executor) {}

        std::shared_ptr<const SelectionData> data;
        std::size_t sent = 0;
        Timer patience;
    };

    void answer(const xcb_selection_request_event_t& request);
    bool convert(const Offer& offer, xcb_atom_t target, const Destination& to);
    bool convertMultiple(const Offer& offer, const Destination& to);
    void sendTargets(const Offer& offer, const Destination& to);
    void send(std::shared_ptr<const SelectionData> data, const Destination& to);
    void startTransfer(std::shared_ptr<const SelectionData> data, const Destination& to);
    void continueTransfer(const Destination& to);
    void endTransfer(const Destination& to);
    void endTransfersTo(xcb_window_t window);
    void setProperty(const Destination& to, xcb_atom_t type, std::uint8_t format, std::string_view bytes);
    void watchRequestor(xcb_window_t window, bool watch);

    X11Connection& connection_;
    const xcb_window_t owner_;
    const std::size_t pieceSize_;
    std::map<xcb_atom_t, Offer> offers_;
    std::map<Destination, Transfer> transfers_;
    std::vector<X11Connection::Token> tokens_;
};

}  // namespace dorix
