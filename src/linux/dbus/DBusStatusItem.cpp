#include "linux/dbus/DBusStatusItem.h"

#include "linux/dbus/StatusGlyph.h"

#include <array>
#include <utility>

namespace dorix {

namespace {

constexpr const char* watcher = "org.kde.StatusNotifierWatcher";
constexpr const char* watcherPath = "/StatusNotifierWatcher";
constexpr const char* interface = "org.kde.StatusNotifierItem";
constexpr const char* path = "/StatusNotifierItem";

}  // namespace

struct StatusItemInterface {
    static DBusStatusItem& item(void* self) { return *static_cast<DBusStatusItem*>(self); }

    static int activate(sd_bus_message* call, void* self, sd_bus_error*) {
        if (item(self).clicked_) item(self).main_.post(item(self).clicked_);
        return sd_bus_reply_method_return(call, nullptr);
    }
    static int nothing(sd_bus_message* call, void*, sd_bus_error*) {
        return sd_bus_reply_method_return(call, nullptr);
    }

    static int string(sd_bus*, const char*, const char*, const char* property, sd_bus_message* reply, void*,
                      sd_bus_error*) {
        const std::string_view name(property);
        const char* value = "";
        if (name == "Category") value = "ApplicationStatus";
        if (name == "Id") value = "es.pelmora.dorix";
        if (name == "Title") value = "DORIX";
        if (name == "Status") value = "Active";
        return sd_bus_message_append(reply, "s", value);
    }
    static int itemIsMenu(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                          sd_bus_error*) {
        return sd_bus_message_append(reply, "b", 0);
    }
    static int windowId(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                        sd_bus_error*) {
        return sd_bus_message_append(reply, "i", 0);
    }
    static int menu(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                    sd_bus_error*) {
        return sd_bus_message_append(reply, "o", DBusMenu::path);
    }
    /// As pixels: no theme knows the icon before the program is installed.
    static int pixmaps(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void*,
                       sd_bus_error*) {
        sd_bus_message_open_container(reply, 'a', "(iiay)");
        for (const int size : {16, 22, 24, 32, 48, 64}) {
            const auto pixels = statusGlyph(size);
            sd_bus_message_open_container(reply, 'r', "iiay");
            sd_bus_message_append(reply, "ii", size, size);
            sd_bus_message_append_array(reply, 'y', pixels.data(), pixels.size());
            sd_bus_message_close_container(reply);
        }
        return sd_bus_message_close_container(reply);
    }
    static int toolTip(sd_bus*, const char*, const char*, const char*, sd_bus_message* reply, void* self,
                       sd_bus_error*) {
        return sd_bus_message_append(reply, "(sa(iiay)ss)", "", 0, item(self).toolTip_.c_str(), "");
    }

    static const sd_bus_vtable* table() {
        static const auto entries = std::to_array<sd_bus_vtable>({
            SD_BUS_VTABLE_START(SD_BUS_VTABLE_UNPRIVILEGED),
            SD_BUS_METHOD("Activate", "ii", "", activate, 0),
            SD_BUS_METHOD("SecondaryActivate", "ii", "", nothing, 0),
            SD_BUS_METHOD("ContextMenu", "ii", "", nothing, 0),
            SD_BUS_METHOD("Scroll", "is", "", nothing, 0),
            SD_BUS_PROPERTY("Category", "s", string, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("Id", "s", string, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("Title", "s", string, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("Status", "s", string, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("WindowId", "i", windowId, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("IconName", "s", string, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("IconPixmap", "a(iiay)", pixmaps, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("OverlayIconName", "s", string, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("AttentionIconName", "s", string, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("ItemIsMenu", "b", itemIsMenu, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("Menu", "o", menu, 0, SD_BUS_VTABLE_PROPERTY_CONST),
            SD_BUS_PROPERTY("ToolTip", "(sa(iiay)ss)", toolTip, 0, 0),
            SD_BUS_SIGNAL("NewTitle", "", 0),
            SD_BUS_SIGNAL("NewIcon", "", 0),
            SD_BUS_SIGNAL("NewAttentionIcon", "", 0),
            SD_BUS_SIGNAL("NewOverlayIcon", "", 0),
            SD_BUS_SIGNAL("NewToolTip", "", 0),
            SD_BUS_SIGNAL("NewStatus", "s", 0),
            SD_BUS_VTABLE_END,
        });
        return entries.data();
    }
};

DBusStatusItem::DBusStatusItem(Executor& main, BusConnection& bus, Words words)
    : main_(main), bus_(bus), words_(std::move(words)), menu_(main, bus), watcher_(bus, watcher, [this] {
          announce();
      }) {}

void DBusStatusItem::show(std::function<void()> clicked, MenuBuilder menu) {
    clicked_ = std::move(clicked);
    menu_.show([words = words_, menu = std::move(menu)] {
        Menu items = menu();
        for (auto& item : items) item.label = words(item.label);
        return items;
    });
    if (std::exchange(shown_, true)) return;
    bus_.addObject(path, interface, StatusItemInterface::table(), this);
    announce();
}

void DBusStatusItem::setToolTip(const std::string& text) {
    const auto shown = words_(text);
    if (std::exchange(toolTip_, shown) == shown || !shown_) return;
    bus_.emit(path, interface, "NewToolTip", [](sd_bus_message*) {});
}

/// By the path: the watcher sees who is calling.
void DBusStatusItem::announce() {
    if (!shown_ || watcher_.owner().empty()) return;
    const auto request = watcher_.newCall(watcherPath, watcher, "RegisterStatusNotifierItem");
    sd_bus_message_append(request.get(), "s", path);
    bus_.callLater(request, [](sd_bus_message*) {});
}

}  // namespace dorix
