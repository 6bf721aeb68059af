#include "linux/dbus/PortalFolderPanel.h"

#include <utility>

namespace dorix {

Task<FolderPanel::Answer> PortalFolderPanel::run(Request request) {
    auto call = chooser_.newCall("OpenFile", request.ownWindow, request.title);
    sd_bus_message_append(call.get(), "{sv}", "accept_label", "s", request.accept.c_str());
    sd_bus_message_append(call.get(), "{sv}", "modal", "b", 1);
    sd_bus_message_append(call.get(), "{sv}", "directory", "b", 1);
    auto outcome = co_await chooser_.ask(std::move(call));
    co_return Answer{.wasAsked = outcome.wasShown, .folder = std::move(outcome.file)};
}

}  // namespace dorix
