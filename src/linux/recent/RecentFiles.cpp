#include "linux/recent/RecentFiles.h"

#include "base/async/Completion.h"
#include "linux/recent/RecentFileList.h"
#include "linux/xdg/AtomicFile.h"

#include <sys/stat.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>

namespace dorix {

namespace {

namespace fs = std::filesystem;

// Desktops let go of what is older than a month; what a script wrote may be any size.
constexpr std::size_t largestList = 8U << 20U;
constexpr std::size_t mostFiles = 1000;

/// Which state of the list it is. One that comes within a moment of another has the same time, but it is
/// another file, as the list is replaced and never written into.
struct Stamp {
    std::int64_t seconds = 0;
    std::int64_t nanoseconds = 0;
    std::uint64_t file = 0;

    bool operator==(const Stamp&) const = default;
};

std::optional<Stamp> stampOf(const fs::path& list) {
    struct stat told{};
    if (stat(list.c_str(), &told) != 0) return std::nullopt;
    return Stamp{.seconds = told.st_mtim.tv_sec, .nanoseconds = told.st_mtim.tv_nsec, .file = told.st_ino};
}

}  // namespace

/// The list as it was at one time. Not changed once made, so any thread may read it.
struct RecentFiles::Known {
    Stamp stamp;
    std::vector<fs::path> files;
};

RecentFiles::RecentFiles(Executor& main, fs::path list, fs::path home)
    : list_(std::move(list)), home_(std::move(home)), tasks_(main) {
    tasks_.spawn(refresh());
}

std::optional<fs::path> RecentFiles::namedIn(std::string_view title) {
    if (!isReading_) tasks_.spawn(refresh());
    if (auto file = fileThatIs(title, home_)) return file;
    return known_ ? fileNamedIn(title, known_->files, home_) : std::nullopt;
}

Task<void> RecentFiles::refresh() {
    isReading_ = true;
    auto read = [list = list_, known = known_] -> std::shared_ptr<const Known> {
        const auto stamp = stampOf(list);
        if (!stamp) return nullptr;
        if (known && known->stamp == *stamp) return known;
        auto contents = readFile(list, largestList).value_or("");
        return std::make_shared<const Known>(*stamp, parseRecentFiles(std::move(contents), mostFiles));
    };
    known_ = co_await runOn(reader_, std::move(read));
    isReading_ = false;
}

}  // namespace dorix
