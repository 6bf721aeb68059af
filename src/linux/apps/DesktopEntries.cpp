#include "linux/apps/DesktopEntries.h"

#include "base/async/Completion.h"
#include "base/text/Text.h"
#include "linux/xdg/AtomicFile.h"
#include "linux/xdg/Environment.h"

#include <cstdint>
#include <map>
#include <system_error>
#include <utility>

namespace dorix {

namespace {

namespace fs = std::filesystem;

constexpr std::uintmax_t maxEntrySize = 1U << 20U;

std::vector<fs::path> entryFolders() {
    auto folders = xdgDataFolders();
    for (auto& folder : folders) folder /= "applications";
    return folders;
}

/// Entries write "es_ES" where the identifier is "es-ES".
std::vector<std::string> nameSuffixes(const SystemLanguages& languages) {
    std::vector<std::string> suffixes;
    for (const auto& identifier : languages.preferred) {
        suffixes.push_back(text::replaceAll(identifier, "-", "_"));
        suffixes.push_back(identifier.substr(0, identifier.find('-')));
    }
    return suffixes;
}

/// Entries in subfolders are named with the folder in front, joined by a hyphen.
std::string entryId(const fs::path& file, const fs::path& folder) {
    auto id = text::replaceAll(file.lexically_relative(folder).string(), "/", "-");
    id.resize(id.size() - std::string_view(".desktop").size());
    return id;
}

}  // namespace

/// The entries as they were found at one time. Not changed once made, so any thread may read it.
class DesktopEntries::Catalogue {
 public:
    using Times = std::vector<fs::file_time_type>;

    Catalogue(const std::vector<fs::path>& folders, const std::vector<std::string>& languages, Times times)
        : times_(std::move(times)) {
        for (const auto& folder : folders) readFolder(folder, languages);
    }

    static Times timesOf(const std::vector<fs::path>& folders) {
        Times times;
        for (const auto& folder : folders) {
            std::error_code error;
            times.push_back(fs::last_write_time(folder, error));
        }
        return times;
    }

    /// When the folders had last changed before they were read.
    const Times& times() const { return times_; }

    const DesktopEntry* find(const std::vector<std::string>& names) const {
        for (const auto& name : names) {
            const auto key = text::lowercase(name);
            for (const auto* known : {&byClass_, &byId_, &byLastPart_}) {
                if (const auto entry = known->find(key); entry != known->end()) return &entry->second;
            }
        }
        return nullptr;
    }

 private:
    void readFolder(const fs::path& folder, const std::vector<std::string>& languages) {
        std::error_code error;
        auto file =
            fs::recursive_directory_iterator(folder, fs::directory_options::skip_permission_denied, error);
        for (; !error && file != fs::recursive_directory_iterator(); file.increment(error)) {
            std::error_code noSize;
            if (file->path().extension() != ".desktop" || file->file_size(noSize) > maxEntrySize) continue;
            const auto contents = readFile(file->path());
            auto entry = contents ? parseDesktopEntry(*contents, languages) : std::nullopt;
            if (!entry) continue;
            entry->id = entryId(file->path(), folder);
            add(std::move(*entry));
        }
    }

    // What is there already comes from a folder before this one and hides it.
    void add(DesktopEntry entry) {
        const auto id = text::lowercase(entry.id);
        if (byId_.contains(id)) return;
        if (!entry.startupWmClass.empty()) byClass_.try_emplace(text::lowercase(entry.startupWmClass), entry);
        // Windows of an application with a reversed-domain identifier often carry the last part of it alone.
        if (const auto dot = id.rfind('.'); dot != std::string::npos)
            byLastPart_.try_emplace(id.substr(dot + 1), entry);
        byId_.emplace(id, std::move(entry));
    }

    Times times_;
    std::map<std::string, DesktopEntry> byClass_;
    std::map<std::string, DesktopEntry> byId_;
    std::map<std::string, DesktopEntry> byLastPart_;
};

DesktopEntries::DesktopEntries(Executor& main)
    : DesktopEntries(main, entryFolders(), nameSuffixes(systemLanguages())) {}

DesktopEntries::DesktopEntries(Executor& main, std::vector<fs::path> folders,
                               std::vector<std::string> languages)
    : folders_(std::move(folders)), languages_(std::move(languages)), tasks_(main) {
    tasks_.spawn(refresh());
}

DesktopEntries::~DesktopEntries() = default;

const DesktopEntry* DesktopEntries::find(const std::vector<std::string>& names) {
    const auto* entry = known_ ? known_->find(names) : nullptr;
    if (!entry && !isReading_) tasks_.spawn(refresh());
    return entry;
}

Task<void> DesktopEntries::refresh() {
    isReading_ = true;
    auto read = [folders = folders_, languages = languages_,
                 known = known_] -> std::shared_ptr<const Catalogue> {
        auto times = Catalogue::timesOf(folders);
        if (known && known->times() == times) return known;
        return std::make_shared<const Catalogue>(folders, languages, std::move(times));
    };
    known_ = co_await runOn(reader_, std::move(read));
    isReading_ = false;
}

}  // namespace dorix
