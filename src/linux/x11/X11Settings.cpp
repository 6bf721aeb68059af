#include "linux/x11/X11Settings.h"

#include <cstdint>
#include <optional>
#include <utility>

namespace dorix {

namespace {

enum class Type : std::uint8_t { integer = 0, string = 1, color = 2 };

constexpr std::size_t colorSize = 8;

/// Reads what the other side has written in its own order of bytes. Nothing is left after the first thing
/// that is missing.
class Reader {
 public:
    explicit Reader(std::string_view bytes) : left_(bytes) {}

    void setBigEndian(bool big) { big_ = big; }

    std::string_view take(std::size_t size) {
        if (size > left_.size()) {
            left_ = {};
            failed_ = true;
            return {};
        }
        const auto taken = left_.substr(0, size);
        left_.remove_prefix(size);
        return taken;
    }

    std::uint32_t number(std::size_t size) {
        std::uint32_t value = 0;
        const auto bytes = take(size);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            const auto byte = static_cast<std::uint8_t>(bytes[big_ ? i : bytes.size() - 1 - i]);
            value = value << 8U | byte;
        }
        return value;
    }

    /// Texts are filled up to four bytes.
    std::string_view text(std::size_t size) {
        const auto text = take(size);
        take((4 - size % 4) % 4);
        return text;
    }

    bool failed() const { return failed_; }

 private:
    std::string_view left_;
    bool big_ = false;
    bool failed_ = false;
};

/// One setting; its value is none when it is of a kind that is left out.
std::optional<std::pair<std::string, std::optional<std::string>>> readSetting(Reader& reader) {
    const auto type = static_cast<Type>(reader.number(1));
    reader.take(1);
    std::string name(reader.text(reader.number(2)));
    reader.number(4);  // the serial of its last change
    std::optional<std::string> value;
    if (type == Type::integer) {
        value = std::to_string(static_cast<std::int32_t>(reader.number(4)));
    } else if (type == Type::string) {
        value = reader.text(reader.number(4));
    } else if (type == Type::color) {
        reader.take(colorSize);
    } else {
        return std::nullopt;
    }
    if (reader.failed()) return std::nullopt;
    return std::pair(std::move(name), std::move(value));
}

}  // namespace

XSettings parseXSettings(std::string_view bytes) {
    XSettings settings;
    Reader reader(bytes);
    reader.setBigEndian(reader.number(1) == 1);
    reader.take(3);
    reader.number(4);  // the serial of this state
    const std::uint32_t count = reader.number(4);
    for (std::uint32_t i = 0; i < count; ++i) {
        auto setting = readSetting(reader);
        if (!setting) break;
        if (setting->second)
            settings.insert_or_assign(std::move(setting->first), std::move(*setting->second));
    }
    return settings;
}

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
