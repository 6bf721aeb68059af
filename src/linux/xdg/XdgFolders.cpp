#include "linux/xdg/XdgFolders.h"

#include "base/text/Text.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>

namespace dorix {

namespace {

std::filesystem::path home() {
    if (const char* variable = std::getenv("HOME"); variable != nullptr && *variable == '/') return variable;
    const auto* entry = getpwuid(getuid());
    return entry != nullptr ? entry->pw_dir : "/";
}

std::filesystem::path folder(const char* variable, const char* underHome) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::filesystem::path(value) : home() / underHome;
}

}  // namespace

std::filesystem::path xdgConfigHome() { return folder("XDG_CONFIG_HOME", ".config"); }
std::filesystem::path xdgDataHome() { return folder("XDG_DATA_HOME", ".local/share"); }

std::vector<std::filesystem::path> xdgDataFolders() {
    const char* value = std::getenv("XDG_DATA_DIRS");
    const bool isSet = value != nullptr && *value != '\0';
    std::vector<std::filesystem::path> folders{xdgDataHome()};
    for (const auto path : text::split(isSet ? value : "/usr/local/share:/usr/share", ':')) {
        if (path.starts_with('/')) folders.emplace_back(path);
    }
    return folders;
}

}  // namespace dorix
