#include "linux/dbus/PortalSavePanel.h"

#include <system_error>
#include <utility>

namespace dorix {

PortalSavePanel::PortalSavePanel(PortalFileChooser& chooser, std::filesystem::path documents)
    : chooser_(chooser), documents_(std::move(documents)) {}

Task<std::optional<std::filesystem::path>> PortalSavePanel::run(Request request) {
    auto call = chooser_.newCall("SaveFile", request.ownWindow, request.title);
    auto* const raw = call.get();
    const std::string folder = documents_.string();
    sd_bus_message_append(raw, "{sv}", "current_name", "s", request.fileName.c_str());
    sd_bus_message_append(raw, "{sv}", "modal", "b", 1);
    sd_bus_message_open_container(raw, 'e', "sv");
    sd_bus_message_append(raw, "s", "current_folder");
    sd_bus_message_open_container(raw, 'v', "ay");
    sd_bus_message_append_array(raw, 'y', folder.c_str(), folder.size() + 1);  // with its NUL
    sd_bus_message_close_container(raw);
    sd_bus_message_close_container(raw);
    auto outcome = co_await chooser_.ask(std::move(call));
    if (!outcome.wasShown) co_return freeName(request.fileName);
    co_return std::move(outcome.file);
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
