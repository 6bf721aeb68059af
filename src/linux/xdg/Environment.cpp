#include "linux/xdg/Environment.h"

#include "base/text/Text.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <string_view>
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

bool isWaylandSession() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string_view(value != nullptr ? value : "");
    };
    return variable("XDG_SESSION_TYPE") == "wayland" || !variable("WAYLAND_DISPLAY").empty();
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

namespace {

using Variable = std::function<std::optional<std::string>(const char*)>;

/// What a session without a locale speaks: programs show their untranslated, English texts.
constexpr std::string_view posixLocale = "en-US-POSIX";

/// "es_ES.UTF-8@euro" as "es-ES".
std::string identifier(std::string_view locale) {
    locale = locale.substr(0, locale.find_first_of(".@"));
    if (locale.empty() || locale == "C" || locale == "POSIX") return std::string(posixLocale);
    return text::replaceAll(locale, "_", "-");
}

std::string firstSet(const Variable& variable, std::initializer_list<const char*> names) {
    for (const char* name : names) {
        if (auto value = variable(name)) return identifier(*value);
    }
    return std::string(posixLocale);
}

}  // namespace

SystemLanguages systemLanguages(const Variable& variable) {
    SystemLanguages languages;
    const auto messages = firstSet(variable, {"LC_ALL", "LC_MESSAGES", "LANG"});
    // LANGUAGE counts only where there is a locale.
    if (const auto list = variable("LANGUAGE"); list && messages != posixLocale) {
        for (const auto entry : text::split(*list, ':')) {
            if (!entry.empty()) languages.preferred.push_back(identifier(entry));
        }
    }
    languages.preferred.push_back(messages);
    const auto formats = firstSet(variable, {"LC_ALL", "LC_TIME", "LANG"});
    languages.currentLanguageCode = formats.substr(0, formats.find('-'));
    return languages;
}

SystemLanguages systemLanguages() {
    return systemLanguages([](const char* name) -> std::optional<std::string> {
        const char* value = std::getenv(name);
        if (value == nullptr || *value == '\0') return std::nullopt;
        return value;
    });
}

}  // namespace dorix
