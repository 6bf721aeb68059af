#include "linux/dbus/PortalFileChooser.h"

#include "base/text/Url.h"

#include <array>
#include <charconv>
#include <memory>
#include <string_view>
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

PortalFileChooser::PortalFileChooser(BusConnection& bus)
    : bus_(bus),
      portal_(bus, service, [this] { portalChanged(); }),
      responses_(portal_.listen("", requestInterface, "Response",
                                [this](sd_bus_message* signal) { responded(signal); })) {}

sdbus::Message PortalFileChooser::newCall(const char* method, std::uint64_t ownWindow,
                                          const std::string& title) const {
    auto message = portal_.newCall(path, interface, method);
    sd_bus_message_append(message.get(), "ss", windowName(ownWindow).c_str(), title.c_str());
    sd_bus_message_open_container(message.get(), 'a', "{sv}");
    return message;
}

Task<PortalFileChooser::Outcome> PortalFileChooser::ask(sdbus::Message call) {
    sd_bus_message_close_container(call.get());
    const auto handle = co_await bus_.answer(std::move(call));
    const char* given = "";
    if (!handle || sd_bus_message_read(handle.get(), "o", &given) <= 0) co_return Outcome();
    // It has died since then, and its dialog with it.
    if (!portal_.hasSent(handle.get())) co_return Outcome{.wasShown = true, .file = {}};
    const std::string name = given;
    auto answer = waiting_[name];
    // However the wait ends, nobody waits any more.
    const std::shared_ptr<void> done(nullptr, [this, name](auto) { waiting_.erase(name); });
    co_return Outcome{.wasShown = true, .file = co_await std::move(answer)};
}

// It is sent to whoever asked, and may come before the one who asked has taken in the request's path.
void PortalFileChooser::responded(sd_bus_message* signal) {
    waiting_[sd_bus_message_get_path(signal)].complete(chosenFile(signal));
}

/// The dialogs of the one that was there have gone with it.
void PortalFileChooser::portalChanged() {
    for (const auto& [name, answer] : std::exchange(waiting_, {})) answer.complete(Answer());
}

}  // namespace dorix
