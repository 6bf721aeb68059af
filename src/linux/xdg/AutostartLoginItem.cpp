#include "linux/xdg/AutostartLoginItem.h"

#include "base/Error.h"
#include "base/text/Text.h"
#include "linux/xdg/AtomicFile.h"

#include <string>
#include <utility>

namespace dorix {

namespace {

/// A path as an argument in an Exec line (freedesktop.org desktop entries, "The Exec key"): quoted, and
/// escaped once as an argument and once as a string value.
std::string execArgument(std::string path) {
    path = text::replaceAll(path, "\\", "\\\\\\\\");
    for (const std::string special : {"\"", "`", "$"})
        path = text::replaceAll(path, special, "\\\\" + special);
    return "\"" + text::replaceAll(path, "%", "%%") + "\"";
}

}  // namespace

AutostartLoginItem::AutostartLoginItem(const std::filesystem::path& configHome,
                                       std::filesystem::path executable)
    : entry_(configHome / "autostart" / "es.pelmora.dorix.desktop"), executable_(std::move(executable)) {}

void AutostartLoginItem::registerApplication() {
    // A desktop passes over the entry when the program that it tries is not there any more.
    const std::string contents = "[Desktop Entry]\nType=Application\nName=DORIX\nTryExec=" +
                                 text::replaceAll(executable_.string(), "\\", "\\\\") +
                                 "\nExec=" + execArgument(executable_.string()) +
                                 "\nX-GNOME-Autostart-enabled=true\n";
    if (const auto error = replaceFile(entry_, contents)) throw MessageError(error.message());
}

void AutostartLoginItem::unregisterApplication() {
    std::error_code error;
    std::filesystem::remove(entry_, error);
    if (error) throw MessageError(error.message());
}

bool AutostartLoginItem::isRegistered() const {
    std::error_code error;
    return std::filesystem::exists(entry_, error);
}

}  // namespace dorix
