#include "linux/x11/X11SelectionRead.h"

#include <algorithm>

namespace dorix {

namespace {
constexpr std::uint32_t wholeProperty = 0x1FFF'FFFF;
}  // namespace

X11SelectionRead::X11SelectionRead(X11Connection& connection, xcb_atom_t selection, xcb_atom_t target,
                                   double deadline, double firstAnswer, std::size_t maxBytes)
    : connection_(connection),
      window_(connection.createHiddenWindow(XCB_EVENT_MASK_PROPERTY_CHANGE)),
      property_(connection.atom("DORIX_SELECTION")),
      deadline_(deadline),
      maxBytes_(maxBytes),
      silence_(connection.executor()) {
    tokens_.push_back(connection_.listen(XCB_SELECTION_NOTIFY, [this](const auto& event) {
        handleNotify(reinterpret_cast<const xcb_selection_notify_event_t&>(event));
    }));
    tokens_.push_back(connection_.listen(XCB_PROPERTY_NOTIFY, [this](const auto& event) {
        handleProperty(reinterpret_cast<const xcb_property_notify_event_t&>(event));
    }));
    xcb_convert_selection(connection_.get(), window_, selection, target, property_, XCB_CURRENT_TIME);
    connection_.flush();
    awaitOwner(firstAnswer);
}

X11SelectionRead::~X11SelectionRead() {
    xcb_destroy_window(connection_.get(), window_);
    connection_.flush();
}

void X11SelectionRead::awaitOwner(double seconds) {
    const double left = deadline_ - connection_.executor().now();
    silence_.once(std::min(seconds, left), [this] { finish(End::silence); });
}

void X11SelectionRead::handleNotify(const xcb_selection_notify_event_t& event) {
    if (event.requestor != window_ || result_.isDone() || pieces_) return;
    if (event.property == XCB_ATOM_NONE) return finish(End::refusal);
    auto data = takeProperty().value_or(SelectionData{});
    if (data.type != connection_.atom("INCR")) {
        if (data.bytes.size() > maxBytes_) return finish(End::tooLarge);
        return finish(End::data, std::move(data));
    }
    // Deleting the announcement asked for the first piece.
    pieces_.emplace();
    awaitOwner(patience);
}

void X11SelectionRead::handleProperty(const xcb_property_notify_event_t& event) {
    const bool piece =
        event.window == window_ && event.atom == property_ && event.state == XCB_PROPERTY_NEW_VALUE;
    if (!piece || !pieces_ || result_.isDone()) return;
    const auto data = takeProperty();
    if (!data) return;
    pieces_->type = data->type;
    pieces_->format = data->format;
    if (data->bytes.empty()) return finish(End::data, std::move(pieces_));
    if (pieces_->bytes.size() + data->bytes.size() > maxBytes_) return finish(End::tooLarge);
    pieces_->bytes += data->bytes;
    awaitOwner(patience);
}

X11SelectionRead::Result X11SelectionRead::takeProperty() {
    const auto reply = connection_.reply(xcb_get_property_reply,
                                         xcb_get_property(connection_.get(), 1, window_, property_,
                                                          XCB_GET_PROPERTY_TYPE_ANY, 0, wholeProperty));
    if (!reply || reply->type == XCB_ATOM_NONE) return std::nullopt;
    return SelectionData{reply->type, reply->format,
                         std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                                     static_cast<std::size_t>(xcb_get_property_value_length(reply.get())))};
}

void X11SelectionRead::finish(End end, Result result) {
    silence_.stop();
    if (!result_.isDone()) end_ = end;
    result_.complete(std::move(result));
}

}  // namespace dorix
