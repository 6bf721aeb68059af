#include "linux/DesktopEntries.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <system_error>
#include <utility>

#include "base/text/Text.h"

namespace dorix {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t maxEntrySize = 1U << 20U;

std::string environment(const char* name, const std::string& otherwise) {
    const char* value = std::getenv(name);
    return value != nullptr && *value != '\0' ? value : otherwise;
}

std::vector<fs::path> systemFolders() {
    const std::string home = environment("HOME", "/");
    const std::string paths = environment("XDG_DATA_HOME", home + "/.local/share") + ":" +
                              environment("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    std::vector<fs::path> folders;
    for (const auto path : text::split(paths, ':')) {
        if (!path.empty()) folders.push_back(fs::path(path) / "applications");
    }
    return folders;
}

std::vector<std::string> systemLanguages() {
    std::string locale = environment("LC_ALL", environment("LC_MESSAGES", environment("LANG", "")));
    locale.resize(std::min(locale.find_first_of(".@"), locale.size()));
    std::vector<std::string> languages{locale};
    if (const auto country = locale.find('_'); country != std::string::npos) {
        languages.push_back(locale.substr(0, country));
    }
    return languages;
}

/// Entries in subfolders are named with the folder in front, joined by a hyphen.
std::string entryId(const fs::path& file, const fs::path& folder) {
    auto id = text::replaceAll(file.lexically_relative(folder).string(), "/", "-");
    id.resize(id.size() - std::string_view(".desktop").size());
    return id;
}

}  // namespace

DesktopEntries::DesktopEntries() : DesktopEntries(systemFolders(), systemLanguages()) {}

DesktopEntries::DesktopEntries(std::vector<fs::path> folders, std::vector<std::string> languages)
    : folders_(std::move(folders)), languages_(std::move(languages)) {}

const DesktopEntry* DesktopEntries::find(const std::vector<std::string>& names) {
    if (const auto* entry = lookUp(names)) return entry;
    if (!foldersChanged()) return nullptr;
    readAll();
    return lookUp(names);
}

const DesktopEntry* DesktopEntries::lookUp(const std::vector<std::string>& names) const {
    for (const auto& name : names) {
        const auto key = text::lowercase(name);
        for (const auto* known : {&byClass_, &byId_, &byLastPart_}) {
            if (const auto entry = known->find(key); entry != known->end()) return &entry->second;
        }
    }
    return nullptr;
}

bool DesktopEntries::foldersChanged() {
    std::vector<fs::file_time_type> times;
    for (const auto& folder : folders_) {
        std::error_code error;
        times.push_back(fs::last_write_time(folder, error));
    }
    return times != std::exchange(folderTimes_, times);
}

void DesktopEntries::readAll() {
    byClass_.clear();
    byId_.clear();
    byLastPart_.clear();
    for (const auto& folder : folders_) readFolder(folder);
}

void DesktopEntries::readFolder(const fs::path& folder) {
    std::error_code error;
    auto file =
        fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied, error);
    for (; !error && file != fs::recursive_directory_iterator(); file.increment(error)) {
        std::error_code ignored;
        if (file->path().extension() != ".desktop" || file->file_size(ignored) > maxEntrySize) continue;
        std::ifstream stream(file->path(), std::ios::binary);
        const std::string contents{std::istreambuf_iterator<char>(stream), {}};
        auto entry = parseDesktopEntry(contents, languages_);
        if (!entry) continue;
        entry->id = entryId(file->path(), folder);
        add(std::move(*entry));
    }
}

// What is there already comes from a folder before this one and hides it.
void DesktopEntries::add(DesktopEntry entry) {
    const auto id = text::lowercase(entry.id);
    if (byId_.contains(id)) return;
    if (!entry.startupWmClass.empty()) byClass_.try_emplace(text::lowercase(entry.startupWmClass), entry);
    // Windows of an application with a reversed-domain identifier often carry the last part of it alone.
    if (const auto dot = id.rfind('.'); dot != std::string::npos)
        byLastPart_.try_emplace(id.substr(dot + 1), entry);
    byId_.emplace(id, std::move(entry));
}

}  // namespace dorix
