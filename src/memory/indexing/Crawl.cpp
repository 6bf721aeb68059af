#include "memory/indexing/Crawl.h"

#include "base/text/Text.h"
#include "memory/indexing/Filters.h"
#include "routing/IntentRules.h"

#include <cstdint>
#include <string>
#include <system_error>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr std::uintmax_t largestFile = 25'000'000;

std::string extensionOf(const fs::path& path) {
    const auto extension = path.extension().string();
    return extension.empty() ? extension : extension.substr(1);
}

/// A folder that its user takes for a document.
bool isPackage(const fs::path& folder) { return text::lowercase(extensionOf(folder)) == "rtfd"; }

bool isWanted(const fs::directory_entry& entry) {
    const auto& path = entry.path();
    if (!isIndexable(extensionOf(path)) || IntentRules::isSecretName(path.filename().string())) return false;
    std::error_code error;
    if (entry.symlink_status(error).type() != fs::file_type::regular) return false;
    const auto size = entry.file_size(error);
    return !error && size < largestFile;
}

}  // namespace

std::vector<fs::path> crawl(const fs::path& folder, const CrawlWatch& watch) {
    std::vector<fs::path> found;
    // Folders still to be looked into: one that cannot be read costs what is below it, and no more.
    std::vector<fs::path> folders{folder};
    while (!folders.empty()) {
        const auto next = std::move(folders.back());
        folders.pop_back();
        std::error_code error;
        for (fs::directory_iterator at(next, error), end; !error && at != end; at.increment(error)) {
            if (watch.goesOn && !watch.goesOn()) return found;
            const auto name = at->path().filename().string();
            if (isSkipped(name) || name.starts_with('.')) continue;
            std::error_code ignored;
            if (at->symlink_status(ignored).type() == fs::file_type::directory) {
                const bool isEntered =
                    !isPackage(at->path()) && (!watch.isLeftOut || !watch.isLeftOut(at->path()));
                if (isEntered) folders.push_back(at->path());
            } else if (isWanted(*at)) {
                found.push_back(at->path());
                if (found.size() == mostFilesOfFolder) return found;
            }
        }
    }
    return found;
}

}  // namespace dorix
