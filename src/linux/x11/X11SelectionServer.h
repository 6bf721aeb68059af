#pragma once

#include "base/async/Timer.h"
#include "linux/x11/SelectionContents.h"
#include "linux/x11/X11Connection.h"

#include <functional>
#include <map>
#include <memory>
#include <vector>

namespace dorix {

/// Owns selections and answers the applications that ask for them. On the connection's executor. Large data
/// goes out in pieces (INCR), to any number of requestors at once, each at its own pace; one that stops
/// asking or whose window goes is forgotten.
class X11SelectionServer {
 public:
    /// What a requestor has been given whole.
    struct Delivery {
        xcb_window_t requestor = XCB_WINDOW_NONE;
        xcb_atom_t selection = XCB_ATOM_NONE;
        xcb_atom_t target = XCB_ATOM_NONE;
        std::uint64_t offer = 0;  // the number that take() gave
    };
    /// Called on the connection's executor.
    using Delivered = std::function<void(const Delivery&)>;

    X11SelectionServer(X11Connection& connection, Delivered delivered);
    ~X11SelectionServer();
    X11SelectionServer(const X11SelectionServer&) = delete;
    X11SelectionServer& operator=(const X11SelectionServer&) = delete;

    /// The window that owns what is taken.
    xcb_window_t window() const { return window_; }

    /// Takes the selection; from now on requests for it are answered out of `contents`. When it returns the
    /// server has carried it out. A number that tells this offer from others.
    std::uint64_t take(xcb_atom_t selection, SelectionContents contents);

    /// Leaves the selection without an owner. Transfers under way finish.
    void giveUp(xcb_atom_t selection);

    /// Offers other contents from now on, or gives the selection up when there are none, unless another
    /// application has taken it since.
    void replaceIfOwned(xcb_atom_t selection, SelectionContents contents);

 private:
    struct Offer {
        SelectionContents contents;
        xcb_atom_t selection = XCB_ATOM_NONE;
        std::uint64_t number = 0;
        xcb_timestamp_t time = XCB_CURRENT_TIME;
    };
    struct Destination {
        xcb_window_t window;
        xcb_atom_t property;

        auto operator<=>(const Destination&) const = default;
    };
    struct Transfer {
        Transfer(std::shared_ptr<const SelectionData> sent, const Delivery& wholly, Executor& executor)
            : data(std::move(sent)), delivery(wholly), patience(executor) {}

        std::shared_ptr<const SelectionData> data;
        Delivery delivery;
        std::size_t sent = 0;
        Timer patience;
    };

    bool owns(xcb_atom_t selection);
    void sync();
    void noteTaken(const xcb_generic_event_t& event);
    void answer(const xcb_selection_request_event_t& request);
    bool convert(const Offer& offer, xcb_atom_t target, const Destination& to);
    bool convertMultiple(const Offer& offer, const Destination& to);
    void sendTargets(const Offer& offer, const Destination& to);
    void send(const Delivery& delivery, const std::shared_ptr<const SelectionData>& data,
              const Destination& to);
    void startTransfer(std::shared_ptr<const SelectionData> data, const Delivery& delivery,
                       const Destination& to);
    void continueTransfer(const Destination& to);
    void endTransfer(const Destination& to);
    void endTransfersTo(xcb_window_t window);
    void setProperty(const Destination& to, xcb_atom_t type, std::uint8_t format, std::string_view bytes);
    void watchRequestor(xcb_window_t window, bool watch);

    X11Connection& connection_;
    const Delivered delivered_;
    const xcb_window_t window_;
    const std::size_t pieceSize_;
    std::map<xcb_atom_t, Offer> offers_;
    std::uint64_t lastOffer_ = 0;
    std::map<Destination, Transfer> transfers_;
    std::vector<Subscription> tokens_;
};

}  // namespace dorix
