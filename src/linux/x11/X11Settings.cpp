#include "linux/x11/X11Settings.h"

#include <utility>

namespace dorix {

namespace {

// Programs look on the first screen; displays with several have gone out of use.
constexpr const char* selection = "_XSETTINGS_S0";
constexpr const char* property = "_XSETTINGS_SETTINGS";
constexpr std::uint32_t maxPropertyWords = 64 * 1024;

}  // namespace

X11Settings::X11Settings(X11Connection& connection, Changed changed)
    : connection_(connection), changed_(std::move(changed)) {
    // Who takes the selection says so to the root window's listeners.
    connection_.selectRootEvents(XCB_EVENT_MASK_STRUCTURE_NOTIFY);
    serviceComes_ = connection_.listen(XCB_CLIENT_MESSAGE, [this](const xcb_generic_event_t& event) {
        const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
        const bool isAnnounced = message.type == connection_.atom("MANAGER") &&
                                 message.data.data32[1] == connection_.atom(selection);
        if (isAnnounced) findService();
    });
    serviceGoes_ = connection_.listen(XCB_DESTROY_NOTIFY, [this](const xcb_generic_event_t& event) {
        const auto window = reinterpret_cast<const xcb_destroy_notify_event_t&>(event).window;
        if (window == service_ && window != XCB_WINDOW_NONE) findService();
    });
    settingsChange_ = connection_.listen(XCB_PROPERTY_NOTIFY, [this](const xcb_generic_event_t& event) {
        const auto window = reinterpret_cast<const xcb_property_notify_event_t&>(event).window;
        if (window == service_ && window != XCB_WINDOW_NONE) read();
    });
    findService();
}

void X11Settings::findService() {
    const auto owner =
        connection_.reply(xcb_get_selection_owner_reply,
                          xcb_get_selection_owner(connection_.get(), connection_.atom(selection)));
    service_ = owner ? owner->owner : XCB_WINDOW_NONE;
    if (service_ != XCB_WINDOW_NONE) {
        const std::uint32_t mask = XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;
        xcb_change_window_attributes(connection_.get(), service_, XCB_CW_EVENT_MASK, &mask);
    }
    read();
}

void X11Settings::read() {
    if (service_ == XCB_WINDOW_NONE) return changed_({});
    const auto name = connection_.atom(property);
    const auto reply =
        connection_.reply(xcb_get_property_reply,
                          xcb_get_property(connection_.get(), 0, service_, name, name, 0, maxPropertyWords));
    if (!reply || reply->format != 8) return changed_({});
    changed_(parseXSettings({static_cast<const char*>(xcb_get_property_value(reply.get())),
                             static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))}));
}

}  // namespace dorix
