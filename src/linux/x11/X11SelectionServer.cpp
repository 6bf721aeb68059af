#include "linux/x11/X11SelectionServer.h"

#include <xcb/xfixes.h>

#include <algorithm>
#include <cstring>

namespace dorix {

namespace {

// A requestor takes each piece as soon as it sees it; one that needs longer has hung or gone.
constexpr double requestorPatience = 5.0;
constexpr std::size_t requestOverhead = 128;
constexpr std::uint32_t maxPairsWords = 2048;

template <typename T>
std::string_view bytesOf(const std::vector<T>& values) {
    return {reinterpret_cast<const char*>(values.data()), values.size() * sizeof(T)};
}

template <typename T>
std::string_view bytesOf(const T& value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
}

}  // namespace

X11SelectionServer::X11SelectionServer(X11Connection& connection, Delivered delivered)
    : connection_(connection),
      delivered_(std::move(delivered)),
      window_(connection.createHiddenWindow(XCB_EVENT_MASK_NO_EVENT)),
      pieceSize_(std::size_t{xcb_get_setup(connection.get())->maximum_request_length} * 4 - requestOverhead) {
    for (const xcb_atom_t selection : {connection_.atom("CLIPBOARD"), xcb_atom_t{XCB_ATOM_PRIMARY}}) {
        xcb_xfixes_select_selection_input(connection_.get(), window_, selection,
                                          XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    }
    connection_.flush();
    const auto* fixes = xcb_get_extension_data(connection_.get(), &xcb_xfixes_id);
    const auto changed = static_cast<std::uint8_t>(fixes->first_event + XCB_XFIXES_SELECTION_NOTIFY);
    tokens_.push_back(connection_.listen(changed, [this](const auto& event) { noteTaken(event); }));
    tokens_.push_back(connection_.listen(XCB_SELECTION_CLEAR, [this](const auto& event) {
        const auto selection = reinterpret_cast<const xcb_selection_clear_event_t&>(event).selection;
        // It may have been taken again since.
        if (!owns(selection)) offers_.erase(selection);
    }));
    tokens_.push_back(connection_.listen(XCB_SELECTION_REQUEST, [this](const auto& event) {
        answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
    }));
    tokens_.push_back(connection_.listen(XCB_PROPERTY_NOTIFY, [this](const auto& event) {
        const auto& change = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (change.state == XCB_PROPERTY_DELETE) continueTransfer({change.window, change.atom});
    }));
    tokens_.push_back(connection_.listen(XCB_DESTROY_NOTIFY, [this](const auto& event) {
        endTransfersTo(reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window);
    }));
}

X11SelectionServer::~X11SelectionServer() {
    xcb_destroy_window(connection_.get(), window_);
    connection_.flush();
}

std::uint64_t X11SelectionServer::take(xcb_atom_t selection, SelectionContents contents) {
    offers_[selection] = {std::move(contents), selection, ++lastOffer_, XCB_CURRENT_TIME};
    xcb_set_selection_owner(connection_.get(), window_, selection, XCB_CURRENT_TIME);
    sync();
    return lastOffer_;
}

void X11SelectionServer::giveUp(xcb_atom_t selection) {
    offers_.erase(selection);
    xcb_set_selection_owner(connection_.get(), XCB_WINDOW_NONE, selection, XCB_CURRENT_TIME);
    sync();
}

void X11SelectionServer::replaceIfOwned(xcb_atom_t selection, SelectionContents contents) {
    if (!owns(selection)) return;
    if (contents.entries().empty()) {
        giveUp(selection);
    } else {
        take(selection, std::move(contents));
    }
}

bool X11SelectionServer::owns(xcb_atom_t selection) {
    const auto owner = connection_.reply(xcb_get_selection_owner_reply,
                                         xcb_get_selection_owner(connection_.get(), selection));
    return owner && owner->owner == window_;
}

// Any answer says that what was asked before is done.
void X11SelectionServer::sync() {
    connection_.reply(xcb_get_input_focus_reply, xcb_get_input_focus(connection_.get()));
}

void X11SelectionServer::noteTaken(const xcb_generic_event_t& event) {
    const auto& taken = reinterpret_cast<const xcb_xfixes_selection_notify_event_t&>(event);
    const auto offer = offers_.find(taken.selection);
    if (taken.owner == window_ && offer != offers_.end()) offer->second.time = taken.selection_timestamp;
}

void X11SelectionServer::answer(const xcb_selection_request_event_t& request) {
    if (request.owner != window_) return;
    // Old clients name no property and mean the target.
    const xcb_atom_t property = request.property != XCB_ATOM_NONE ? request.property : request.target;
    const auto offer = offers_.find(request.selection);
    const bool done =
        offer != offers_.end() && convert(offer->second, request.target, {request.requestor, property});

    xcb_selection_notify_event_t notify{};
    notify.response_type = XCB_SELECTION_NOTIFY;
    notify.time = request.time;
    notify.requestor = request.requestor;
    notify.selection = request.selection;
    notify.target = request.target;
    notify.property = done ? property : xcb_atom_t{XCB_ATOM_NONE};
    xcb_send_event(connection_.get(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&notify));
}

bool X11SelectionServer::convert(const Offer& offer, xcb_atom_t target, const Destination& to) {
    if (target == connection_.atom("MULTIPLE")) return convertMultiple(offer, to);
    if (target == connection_.atom("TARGETS")) {
        sendTargets(offer, to);
        return true;
    }
    if (target == connection_.atom("TIMESTAMP")) {
        setProperty(to, XCB_ATOM_INTEGER, 32, bytesOf(offer.time));
        return true;
    }
    if (target == connection_.atom("SAVE_TARGETS")) {
        setProperty(to, connection_.atom("NULL"), 32, {});
        return true;
    }
    const auto data = offer.contents.find(target);
    if (!data) return false;
    send({to.window, offer.selection, target, offer.number}, data, to);
    return true;
}

void X11SelectionServer::sendTargets(const Offer& offer, const Destination& to) {
    std::vector<xcb_atom_t> targets{connection_.atom("TARGETS"), connection_.atom("MULTIPLE"),
                                    connection_.atom("TIMESTAMP"), connection_.atom("SAVE_TARGETS")};
    for (const auto& [target, data] : offer.contents.entries()) targets.push_back(target);
    setProperty(to, XCB_ATOM_ATOM, 32, bytesOf(targets));
}

bool X11SelectionServer::convertMultiple(const Offer& offer, const Destination& to) {
    const auto reply = connection_.reply(xcb_get_property_reply,
                                         xcb_get_property(connection_.get(), 0, to.window, to.property,
                                                          XCB_GET_PROPERTY_TYPE_ANY, 0, maxPairsWords));
    if (!reply || reply->format != 32) return false;
    std::vector<xcb_atom_t> pairs(static_cast<std::size_t>(xcb_get_property_value_length(reply.get())) / 4);
    if (!pairs.empty()) std::memcpy(pairs.data(), xcb_get_property_value(reply.get()), pairs.size() * 4);
    bool allDone = true;
    for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
        const bool nested = pairs[i] == connection_.atom("MULTIPLE");
        if (!nested && pairs[i + 1] != XCB_ATOM_NONE && convert(offer, pairs[i], {to.window, pairs[i + 1]}))
            continue;
        pairs[i + 1] = XCB_ATOM_NONE;
        allDone = false;
    }
    if (!allDone) setProperty(to, connection_.atom("ATOM_PAIR"), 32, bytesOf(pairs));
    return true;
}

void X11SelectionServer::send(const Delivery& delivery, const std::shared_ptr<const SelectionData>& data,
                              const Destination& to) {
    if (data->bytes.size() > pieceSize_) return startTransfer(data, delivery, to);
    setProperty(to, data->type, data->format, data->bytes);
    delivered_(delivery);
}

void X11SelectionServer::startTransfer(std::shared_ptr<const SelectionData> data, const Delivery& delivery,
                                       const Destination& to) {
    transfers_.erase(to);
    watchRequestor(to.window, true);
    const auto size = static_cast<std::uint32_t>(std::min<std::size_t>(data->bytes.size(), UINT32_MAX));
    auto& transfer =
        transfers_.try_emplace(to, std::move(data), delivery, connection_.executor()).first->second;
    transfer.patience.once(requestorPatience, [this, to] { endTransfer(to); });
    setProperty(to, connection_.atom("INCR"), 32, bytesOf(size));
}

void X11SelectionServer::continueTransfer(const Destination& to) {
    const auto found = transfers_.find(to);
    if (found == transfers_.end()) return;
    auto& transfer = found->second;
    // The last piece is an empty one.
    const auto piece = std::string_view(transfer.data->bytes).substr(transfer.sent, pieceSize_ / 4 * 4);
    setProperty(to, transfer.data->type, transfer.data->format, piece);
    transfer.sent += piece.size();
    if (piece.empty()) {
        delivered_(transfer.delivery);
        endTransfer(to);
    } else {
        transfer.patience.once(requestorPatience, [this, to] { endTransfer(to); });
    }
}

void X11SelectionServer::endTransfer(const Destination& to) {
    const auto ended = transfers_.extract(to);
    const bool others =
        std::ranges::any_of(transfers_, [&](const auto& entry) { return entry.first.window == to.window; });
    if (!others) watchRequestor(to.window, false);
    connection_.flush();
}

void X11SelectionServer::endTransfersTo(xcb_window_t window) {
    std::erase_if(transfers_, [window](const auto& entry) { return entry.first.window == window; });
}

void X11SelectionServer::setProperty(const Destination& to, xcb_atom_t type, std::uint8_t format,
                                     std::string_view bytes) {
    const std::size_t units = bytes.size() / (format / 8U);
    xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, to.window, to.property, type, format,
                        static_cast<std::uint32_t>(units), bytes.data());
}

void X11SelectionServer::watchRequestor(xcb_window_t window, bool watch) {
    const std::uint32_t mask =
        watch ? XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY : XCB_EVENT_MASK_NO_EVENT;
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &mask);
}

}  // namespace dorix
