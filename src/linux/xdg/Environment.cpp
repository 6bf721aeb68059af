#include "linux/xdg/Environment.h"

#include "base/Json.h"
#include "base/text/Text.h"
#include "linux/xdg/AtomicFile.h"

#include <pwd.h>
#include <unistd.h>

#include <array>
#include <climits>
#include <cstdlib>
#include <fstream>
#include <initializer_list>
#include <string_view>
#include <system_error>

namespace dorix {

// The environment is written to only before there are threads, and nobody else asks for users.
// NOLINTBEGIN(concurrency-mt-unsafe)
std::filesystem::path homeFolder() {
    if (const char* variable = std::getenv("HOME"); variable != nullptr && *variable == '/') return variable;
    const auto* entry = getpwuid(getuid());
    return entry != nullptr ? entry->pw_dir : "/";
}

namespace {

std::filesystem::path folder(const char* variable, const char* underHome) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value == '/' ? std::filesystem::path(value) : homeFolder() / underHome;
}

/// Those that a variable lists, or its default; relative ones are left out.
std::vector<std::filesystem::path> folders(const char* variable, const char* otherwise) {
    const char* value = std::getenv(variable);
    const bool isSet = value != nullptr && *value != '\0';
    std::vector<std::filesystem::path> all;
    for (const auto path : text::split(isSet ? value : otherwise, ':')) {
        if (path.starts_with('/')) all.emplace_back(path);
    }
    return all;
}

}  // namespace

std::filesystem::path xdgConfigHome() { return folder("XDG_CONFIG_HOME", ".config"); }
std::filesystem::path xdgDataHome() { return folder("XDG_DATA_HOME", ".local/share"); }

std::filesystem::path xdgRuntimeFolder() { return folder("XDG_RUNTIME_DIR", ".cache"); }

std::vector<std::filesystem::path> xdgDataFolders() {
    std::vector<std::filesystem::path> all{xdgDataHome()};
    for (auto& path : folders("XDG_DATA_DIRS", "/usr/local/share:/usr/share")) all.push_back(std::move(path));
    return all;
}

std::vector<std::filesystem::path> xdgConfigFolders() { return folders("XDG_CONFIG_DIRS", "/etc/xdg"); }

std::optional<std::string> packagedServer() {
    constexpr std::size_t largest = 1024UZ * 1024;  // bytes
    for (const auto& path : xdgConfigFolders()) {
        const auto text = readFile(path / "dorix" / "defaults.json", largest);
        if (!text) continue;
        const auto values = Json::parse(*text, nullptr, false);
        const auto server = values.is_object() ? values.value("DORIXServerURL", Json()) : Json();
        return server.is_string() ? std::optional(server.get<std::string>()) : std::nullopt;
    }
    return std::nullopt;
}

std::filesystem::path packagedSpeechModels() {
    const char* chosen = std::getenv("DORIX_POCKETSPHINX_MODELS");
    return chosen != nullptr && *chosen != '\0' ? chosen : DORIX_POCKETSPHINX_MODELDIR;
}

bool isWaylandSession() {
    const auto variable = [](const char* name) {
        const char* value = std::getenv(name);
        return std::string_view(value != nullptr ? value : "");
    };
    return variable("XDG_SESSION_TYPE") == "wayland" || !variable("WAYLAND_DISPLAY").empty();
}
// NOLINTEND(concurrency-mt-unsafe)

std::string computerName() {
    constexpr std::string_view key = "PRETTY_HOSTNAME=";
    std::ifstream file("/etc/machine-info");
    for (std::string line; std::getline(file, line);) {
        const auto name = line.starts_with(key)
                              ? text::trimAny(std::string_view(line).substr(key.size()), "\"' ")
                              : std::string_view();
        if (!name.empty()) return std::string(name);
    }
    std::array<char, HOST_NAME_MAX + 1> host{};
    ::gethostname(host.data(), host.size() - 1);
    return host.data();
}

std::uint64_t computerMemory() {
    const auto pages = ::sysconf(_SC_PHYS_PAGES);
    const auto size = ::sysconf(_SC_PAGESIZE);
    return pages > 0 && size > 0 ? static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(size) : 0;
}

namespace {

/// What the desktop's file of user folders says of one of them, such as "DOCUMENTS".
std::optional<std::filesystem::path> userFolder(const std::string& name) {
    constexpr std::string_view homeVariable = "$HOME/";
    const std::string key = "XDG_" + name + "_DIR=\"";
    std::ifstream file(xdgConfigHome() / "user-dirs.dirs");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(key) || !line.ends_with('"')) continue;
        const std::string value = line.substr(key.size(), line.size() - key.size() - 1);
        const std::filesystem::path folder = value.starts_with(homeVariable)
                                                 ? homeFolder() / value.substr(homeVariable.size())
                                                 : std::filesystem::path(value);
        if (folder.is_absolute()) return folder;
    }
    return std::nullopt;
}

}  // namespace

std::filesystem::path xdgDocuments() {
    const auto folder = userFolder("DOCUMENTS");
    std::error_code error;
    return folder && std::filesystem::is_directory(*folder, error) ? *folder : homeFolder();
}

std::vector<std::filesystem::path> xdgDocumentFolders() {
    struct Custom {
        const char* name;
        const char* underHome;
    };
    constexpr std::array customs{Custom{"DOCUMENTS", "Documents"}, Custom{"DESKTOP", "Desktop"},
                                 Custom{"DOWNLOAD", "Downloads"}};
    // However they are written, with a slash at the end or without.
    const auto plain = [](const std::filesystem::path& path) {
        return (path / ".").lexically_normal().parent_path();
    };
    std::vector<std::filesystem::path> folders;
    for (const auto& custom : customs) {
        auto folder = plain(userFolder(custom.name).value_or(homeFolder() / custom.underHome));
        if (folder != plain(homeFolder())) folders.push_back(std::move(folder));
    }
    return folders;
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
