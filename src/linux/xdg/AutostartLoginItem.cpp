#include "linux/xdg/AutostartLoginItem.h"

#include "base/Error.h"
#include "base/text/Text.h"
#include "linux/xdg/AtomicFile.h"

#include <unistd.h>

#include <algorithm>
#include <string>
#include <string_view>
#include <utility>

namespace dorix {

namespace {

std::filesystem::path entryIn(const std::filesystem::path& folder) {
    return folder / "autostart" / "es.pelmora.dorix.desktop";
}

/// A path as an argument in an Exec line (freedesktop.org desktop entries, "The Exec key"): quoted, and
/// escaped once as an argument and once as a string value.
std::string execArgument(std::string path) {
    path = text::replaceAll(path, "\\", "\\\\\\\\");
    for (const std::string special : {"\"", "`", "$"})
        path = text::replaceAll(path, special, "\\\\" + special);
    return "\"" + text::replaceAll(path, "%", "%%") + "\"";
}

std::string valueOf(std::string_view contents, std::string_view key) {
    for (const auto line : text::split(contents, '\n')) {
        if (line.starts_with(key) && line.substr(key.size()).starts_with('='))
            return text::replaceAll(std::string(line.substr(key.size() + 1)), "\\\\", "\\");
    }
    return {};
}

/// By what is in an entry. A program that is quoted or looked for in the path is believed to be there.
bool starts(std::string_view contents) {
    if (valueOf(contents, "Hidden") == "true") return false;
    if (valueOf(contents, "X-GNOME-Autostart-enabled") == "false") return false;
    auto program = valueOf(contents, "TryExec");
    if (program.empty()) {
        program = valueOf(contents, "Exec");
        program.resize(std::min(program.find(' '), program.size()));
    }
    return !program.starts_with('/') || access(program.c_str(), X_OK) == 0;
}

constexpr std::size_t largest = 65536;  // bytes

}  // namespace

AutostartLoginItem::AutostartLoginItem(const std::filesystem::path& configHome,
                                       const std::vector<std::filesystem::path>& configFolders,
                                       std::filesystem::path executable)
    : entry_(entryIn(configHome)), executable_(std::move(executable)) {
    for (const auto& folder : configFolders) systemEntries_.push_back(entryIn(folder));
}

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
    if (std::ranges::any_of(systemEntries_, [&](const auto& entry) { return exists(entry, error); })) {
        error = replaceFile(entry_, "[Desktop Entry]\nType=Application\nName=DORIX\nHidden=true\n");
    } else {
        std::filesystem::remove(entry_, error);
    }
    if (error) throw MessageError(error.message());
}

bool AutostartLoginItem::isRegistered() const {
    if (const auto own = readFile(entry_, largest)) return starts(*own);
    for (const auto& entry : systemEntries_) {
        if (const auto contents = readFile(entry, largest)) return starts(*contents);
    }
    return false;
}

}  // namespace dorix
