#include "linux/dbus/PortalSavePanel.h"

#include "base/text/Url.h"

#include <array>
#include <charconv>
#include <string_view>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

constexpr const char* service = "org.freedesktop.portal.Desktop";
constexpr const char* path = "/org/freedesktop/portal/desktop";
constexpr const char* interface = "org.freedesktop.portal.FileChooser";
constexpr const char* requestInterface = "org.freedesktop.portal.Request";
std::string windowName(std::uint64_t window) {
    if (window == 0) return "";
    std::array<char, 16> hex{};
    const auto end = std::to_chars(hex.begin(), hex.end(), window, 16).ptr;
    return "x11:" + std::string(hex.begin(), end);
}

/// The first of the "uris" of a response.
std::optional<std::filesystem::path> chosenFile(sd_bus_message* signal) {
    std::uint32_t outcome = 1;
    if (sd_bus_message_read(signal, "u", &outcome) <= 0 || outcome != 0) return std::nullopt;
    if (sd_bus_message_enter_container(signal, 'a', "{sv}") <= 0) return std::nullopt;
    while (sd_bus_message_enter_container(signal, 'e', "sv") > 0) {
        const char* key = "";
        const char* uri = "";
        sd_bus_message_read(signal, "s", &key);
        if (std::string_view(key) == "uris" && sd_bus_message_enter_container(signal, 'v', "as") > 0 &&
            sd_bus_message_enter_container(signal, 'a', "s") > 0 &&
            sd_bus_message_read(signal, "s", &uri) > 0) {
            return pathOfFileURL(uri);
        }
        sd_bus_message_skip(signal, "v");
        sd_bus_message_exit_container(signal);
    }
    return std::nullopt;
}

}  // namespace

PortalSavePanel::PortalSavePanel(BusConnection& bus, std::filesystem::path documents)
    : bus_(bus),
      documents_(std::move(documents)),
      portal_(bus, service, [this] { portalChanged(); }),
      responses_(portal_.listen("", requestInterface, "Response",
                                [this](sd_bus_message* signal) { responded(signal); })) {}

Task<std::optional<std::filesystem::path>> PortalSavePanel::run(Request request) {
    const auto handle = co_await bus_.answer(call(request));
    const char* given = "";
    if (!handle || sd_bus_message_read(handle.get(), "o", &given) <= 0) co_return freeName(request.fileName);
    // It has died since then, and its dialog with it.
    if (!portal_.hasSent(handle.get())) co_return std::nullopt;
    const std::string name = given;
    auto answer = waiting_[name];
    // However the wait ends, nobody waits any more.
    const std::shared_ptr<void> done(nullptr, [this, name](auto) { waiting_.erase(name); });
    co_return co_await std::move(answer);
}

sdbus::Message PortalSavePanel::call(const Request& request) const {
    auto message = portal_.newCall(path, interface, "SaveFile");
    auto* raw = message.get();
    const std::string folder = documents_.string();
    sd_bus_message_append(raw, "ss", windowName(request.ownWindow).c_str(), request.title.c_str());
    sd_bus_message_open_container(raw, 'a', "{sv}");
    sd_bus_message_append(raw, "{sv}", "current_name", "s", request.fileName.c_str());
    sd_bus_message_append(raw, "{sv}", "modal", "b", 1);
    sd_bus_message_open_container(raw, 'e', "sv");
    sd_bus_message_append(raw, "s", "current_folder");
    sd_bus_message_open_container(raw, 'v', "ay");
    sd_bus_message_append_array(raw, 'y', folder.c_str(), folder.size() + 1);  // with its NUL
    sd_bus_message_close_container(raw);
    sd_bus_message_close_container(raw);
    sd_bus_message_close_container(raw);
    return message;
}

// It is sent to whoever asked, and may come before the one who asked has taken in the request's path.
void PortalSavePanel::responded(sd_bus_message* signal) {
    waiting_[sd_bus_message_get_path(signal)].complete(chosenFile(signal));
}

/// The dialogs of the one that was there have gone with it.
void PortalSavePanel::portalChanged() {
    for (const auto& [name, answer] : std::exchange(waiting_, {})) answer.complete(Answer());
}

/// "name.md", or else "name 2.md" and so on.
std::filesystem::path PortalSavePanel::freeName(const std::string& fileName) const {
    const std::filesystem::path wanted = documents_ / fileName;
    std::filesystem::path name = wanted;
    std::error_code error;
    for (int number = 2; std::filesystem::exists(name, error); ++number) {
        name = wanted;
        name.replace_filename(wanted.stem().string() + " " + std::to_string(number) +
                              wanted.extension().string());
    }
    return name;
}

}  // namespace dorix
