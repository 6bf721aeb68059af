#include "linux/xdg/XdgFolders.h"

#include "base/text/Text.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <system_error>

namespace dorix {

// The environment is written to only before there are threads, and nobody else asks for users.
// NOLINTBEGIN(concurrency-mt-unsafe)
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
// NOLINTEND(concurrency-mt-unsafe)

std::filesystem::path xdgDocuments() {
    constexpr std::string_view key = "XDG_DOCUMENTS_DIR=\"";
    constexpr std::string_view homeVariable = "$HOME/";
    std::ifstream file(xdgConfigHome() / "user-dirs.dirs");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(key) || !line.ends_with('"')) continue;
        const std::string value = line.substr(key.size(), line.size() - key.size() - 1);
        const std::filesystem::path folder = value.starts_with(homeVariable)
                                                 ? home() / value.substr(homeVariable.size())
                                                 : std::filesystem::path(value);
        std::error_code error;
        if (folder.is_absolute() && std::filesystem::is_directory(folder, error)) return folder;
    }
    return home();
}

}  // namespace dorix
