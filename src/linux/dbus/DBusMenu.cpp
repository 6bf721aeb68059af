#include "linux/dbus/DBusMenu.h"

#include "base/text/Text.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace dorix {

namespace {

constexpr const char* interface = "com.canonical.dbusmenu";

std::vector<std::int32_t> readIds(sd_bus_message* message) {
    std::vector<std::int32_t> ids;
    std::int32_t id = 0;
    if (sd_bus_message_enter_container(message, 'a', "i") < 0) return ids;
    while (sd_bus_message_read_basic(message, 'i', &id) > 0) ids.push_back(id);
    sd_bus_message_exit_container(message);
    return ids;
}

void appendIds(sd_bus_message* message, const std::vector<std::int32_t>& ids) {
    sd_bus_message_append_array(message, 'i', ids.data(), ids.size() * sizeof(std::int32_t));
}

sdbus::Message replyTo(sd_bus_message* call) {
    sd_bus_message* reply = nullptr;
    sd_bus_message_new_method_return(call, &reply);
    return sdbus::Message(reply);
}

int send(const sdbus::Message& reply) { return sd_bus_send(nullptr, reply.get(), nullptr); }

int unknownItem(sd_bus_error* error) {
    return sd_bus_error_set(error, "com.canonical.dbusmenu.Error", "no such item");
}

bool sameLabels(const Menu& one, const Menu& other) {
    return std::ranges::equal(one, other, {}, &ClosureMenuItem::label, &ClosureMenuItem::label);
}

}  // namespace

struct MenuInterface {
    static DBusMenu& menu(void* self) { return *static_cast<DBusMenu*>(self); }

    static int getLayout(sd_bus_message* call, void* self, sd_bus_error* error) {
        std::int32_t parent = 0;
        if (const int code = sd_bus_message_read_basic(call, 'i', &parent); code < 0) return code;
        if (!menu(self).isKnown(parent)) return unknownItem(error);
        const auto reply = replyTo(call);
        sd_bus_message_append(reply.get(), "u", menu(self).revision_);
        menu(self).appendLayout(reply.get(), parent);
        return send(reply);
    }

    static int getGroupProperties(sd_bus_message* call, void* self, sd_bus_error*) {
        const auto reply = replyTo(call);
        sd_bus_message_open_container(reply.get(), 'a', "(ia{sv})");
        for (const auto id : readIds(call)) {
            if (!menu(self).isKnown(id)) continue;
            sd_bus_message_open_container(reply.get(), 'r', "ia{sv}");
            sd_bus_message_append(reply.get(), "i", id);
            menu(self).appendProperties(reply.get(), id);
            sd_bus_message_close_container(reply.get());
        }
        sd_bus_message_close_container(reply.get());
        return send(reply);
    }

    static int getProperty(sd_bus_message* call, void* self, sd_bus_error* error) {
        std::int32_t id = 0;
        const char* name = "";
        if (const int code = sd_bus_message_read(call, "is", &id, &name); code < 0) return code;
        const auto* item = menu(self).item(id);
        if (!item || std::string_view(name) != "label") return unknownItem(error);
        return sd_bus_reply_method_return(call, "v", "s", item->label.c_str());
    }

    static int event(sd_bus_message* call, void* self, sd_bus_error*) {
        std::int32_t id = 0;
        const char* what = "";
        if (const int code = sd_bus_message_read(call, "is", &id, &what); code < 0) return code;
        menu(self).happened(id, what);
        return sd_bus_reply_method_return(call, nullptr);
    }

    static int eventGroup(sd_bus_message* call, void* self, sd_bus_error*) {
        std::vector<std::int32_t> unknown;
        sd_bus_message_enter_container(call, 'a', "(isvu)");
        while (sd_bus_message_enter_container(call, 'r', "isvu") > 0) {
            std::int32_t id = 0;
            const char* what = "";
            sd_bus_message_read(call, "is", &id, &what);
            if (!menu(self).isKnown(id)) unknown.push_back(id);
            menu(self).happened(id, what);
            sd_bus_message_skip(call, "vu");
            sd_bus_message_exit_container(call);
        }
        const auto reply = replyTo(call);
        appendIds(reply.get(), unknown);
        return send(reply);
    }

    static int aboutToShow(sd_bus_message* call, void* self, sd_bus_error*) {
        return sd_bus_reply_method_return(call, "b", menu(self).rebuild() ? 1 : 0);
    }

    static int aboutToShowGroup(sd_bus_message* call, void* self, sd_bus_error*) {
        const bool changed = menu(self).rebuild();
        const auto reply = replyTo(call);
        appendIds(reply.get(), changed ? readIds(call) : std::vector<std::int32_t>{});
        appendIds(reply.get(), {});
        return send(reply);
    }

    static int version(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                       sd_bus_error*) {
        return sd_bus_message_append(reply, "u", 3);
    }
    static int status(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                      sd_bus_error*) {
        return sd_bus_message_append(reply, "s", "normal");
    }
    static int direction(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                         sd_bus_error*) {
        return sd_bus_message_append(reply, "s", "ltr");
    }
    static int themes(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                      sd_bus_error*) {
        return sd_bus_message_append(reply, "as", 0);
    }

    static const sd_bus_vtable* table() {
        static const auto entries = std::to_array<sd_bus_vtable>({
            SD_BUS_VTABLE_START(SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("GetLayout", "iias", "u(ia{sv}av)", getLayout, 0),
            SD_BUS_METHOD("GetGroupProperties", "aias", "a(ia{sv})", getGroupProperties, 0),
            SD_BUS_METHOD("GetProperty", "is", "v", getProperty, 0),
            SD_BUS_METHOD("Event", "isvu", "", event, 0),
            SD_BUS_METHOD("EventGroup", "a(isvu)", "ai", eventGroup, 0),
            SD_BUS_METHOD("AboutToShow", "i", "b", aboutToShow, 0),
            SD_BUS_METHOD("AboutToShowGroup", "ai", "aiai", aboutToShowGroup, 0),
            SD_BUS_PROPERTY("Version", "u", version, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("Status", "s", status, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("TextDirection", "s", direction, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("IconThemePath", "as", themes, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_SIGNAL("ItemsPropertiesUpdated", "a(ia{sv})a(ias)", 0),
            SD_BUS_SIGNAL("LayoutUpdated", "ui", 0),
            SD_BUS_SIGNAL("ItemActivationRequested", "iu", 0),
            SD_BUS_VTABLE_END,
        });
        return entries.data();
    }
};

void DBusMenu::show(MenuBuilder builder) {
    const bool first = !std::exchange(builder_, std::move(builder));
    rebuild();
    if (first) bus_.addObject(path, interface, MenuInterface::table(), this);
}

/// Whether it reads differently now.
bool DBusMenu::rebuild() {
    auto menu = builder_();
    const bool changed = !sameLabels(menu, menu_);
    if (changed) {
        firstId_ += static_cast<std::int32_t>(menu_.size());
        ++revision_;
    }
    menu_ = std::move(menu);
    if (!changed) return false;
    bus_.emit(path, interface, "LayoutUpdated",
              [this](sd_bus_message* signal) { sd_bus_message_append(signal, "ui", revision_, 0); });
    return true;
}

/// An item with what is below it; 0 is the menu itself.
void DBusMenu::appendLayout(sd_bus_message* reply, std::int32_t parent) const {
    sd_bus_message_open_container(reply, 'r', "ia{sv}av");
    sd_bus_message_append(reply, "i", parent);
    appendProperties(reply, parent);
    sd_bus_message_open_container(reply, 'a', "v");
    for (std::size_t i = 0; parent == 0 && i < menu_.size(); ++i)
        appendItem(reply, firstId_ + static_cast<std::int32_t>(i));
    sd_bus_message_close_container(reply);
    sd_bus_message_close_container(reply);
}

void DBusMenu::appendItem(sd_bus_message* reply, std::int32_t id) const {
    sd_bus_message_open_container(reply, 'v', "(ia{sv}av)");
    appendLayout(reply, id);
    sd_bus_message_close_container(reply);
}

void DBusMenu::appendProperties(sd_bus_message* reply, std::int32_t id) const {
    const auto* entry = item(id);
    if (!entry) {
        sd_bus_message_append(reply, "a{sv}", 1, "children-display", "s", "submenu");
    } else if (entry->isSeparator()) {
        sd_bus_message_append(reply, "a{sv}", 1, "type", "s", "separator");
    } else {
        // An underline would mark a key.
        const auto label = text::replaceAll(entry->label, "_", "__");
        sd_bus_message_append(reply, "a{sv}", 1, "label", "s", label.c_str());
    }
}

const ClosureMenuItem* DBusMenu::item(std::int32_t id) const {
    if (id < firstId_) return nullptr;
    const auto index = static_cast<std::size_t>(id - firstId_);
    return index < menu_.size() ? &menu_[index] : nullptr;
}

void DBusMenu::happened(std::int32_t id, const std::string& event) {
    const auto* chosen = item(id);
    if (event == "clicked" && chosen && chosen->handler) main_.post(chosen->handler);
}

}  // namespace dorix
