#include "memory/indexing/FolderWalks.h"

#include "base/text/Text.h"
#include "memory/indexing/Crawl.h"
#include "memory/indexing/Filters.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <iterator>
#include <optional>
#include <system_error>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

/// A disk that has to be started first takes ten seconds.
constexpr double patience = 20;  // seconds

/// Where a folder of the user's is, which may be a link, as mounts are told by.
std::string resolved(const fs::path& folder) {
    std::error_code error;
    const auto real = fs::canonical(folder, error);
    return error ? folder.string() : real.string();
}

/// Whether a crawl of `root` would come to a folder below it.
bool mayEnter(const std::string& folder, const std::string& root) {
    if (!isBelow(folder, root)) return false;
    const auto names = text::split(std::string_view(folder).substr(root.size()), '/');
    return std::ranges::none_of(names, [](auto name) { return name.starts_with('.') || isSkipped(name); });
}

/// The innermost of the mounts that a folder is, or lies in; "" for none.
std::string mountOf(const std::string& folder, const std::vector<std::string>& mounts) {
    std::string innermost;
    for (const auto& mount : mounts) {
        const bool isAround = mount == folder || isBelow(folder, mount);
        if (isAround && mount.size() > innermost.size()) innermost = mount;
    }
    return innermost;
}

std::vector<FoundFile> walk(const fs::path& folder, const std::vector<std::string>& leftOut,
                            const LooseThreads::Watch& watch) {
    const auto goesOn = [&watch] { return watch.goesOn(); };
    const auto isLeftOut = [&leftOut](const fs::path& path) {
        return std::ranges::find(leftOut, path.string()) != leftOut.end();
    };
    std::vector<FoundFile> files;
    for (const auto& file : crawl(folder, {.isLeftOut = isLeftOut, .goesOn = goesOn})) {
        if (!watch.goesOn()) break;
        files.push_back({.path = file.string(), .modified = modifiedOf(file), .mount = {}});
    }
    return files;
}

}  // namespace

double modifiedOf(const fs::path& file) {
    std::error_code error;
    const auto time = fs::last_write_time(file, error);
    if (error) return 0;
    return std::chrono::duration<double>(fs::file_time_type::clock::to_sys(time).time_since_epoch()).count();
}

bool isBelow(std::string_view path, std::string_view folder) {
    while (folder.ends_with('/')) folder.remove_suffix(1);
    return path.starts_with(folder) && path.substr(folder.size()).starts_with('/');
}

Task<FolderFiles> FolderWalks::filesIn(fs::path folder) {
    FolderFiles found;
    const auto root = co_await threads_.run(
        folder.string(), [folder](const LooseThreads::Watch&) { return resolved(folder); }, patience);
    if (!root) {
        found.silent.push_back(folder.string());
        co_return found;
    }
    auto mounts = tree_.networkMounts();
    const auto around = mountOf(*root, mounts);
    std::erase_if(mounts, [&root](const auto& mount) { return !mayEnter(mount, *root); });
    std::vector<std::string> remote;  // as the crawl comes to them
    for (const auto& mount : mounts)
        remote.push_back((folder / fs::path(mount).lexically_relative(*root)).string());
    co_await addFiles(folder.string(), around, remote, found);
    for (std::size_t i = 0; i < mounts.size(); ++i) co_await addFiles(remote[i], mounts[i], remote, found);
    found.files.resize(std::min(found.files.size(), mostFilesOfFolder));
    co_return found;
}

Task<void> FolderWalks::addFiles(std::string folder, std::string mount, std::vector<std::string> leftOut,
                                 FolderFiles& to) {
    auto files = co_await threads_.run(
        folder,
        [folder, leftOut = std::move(leftOut)](const LooseThreads::Watch& watch) {
            return walk(folder, leftOut, watch);
        },
        patience);
    if (!files) {
        to.silent.push_back(folder);
        co_return;
    }
    for (auto& file : *files) file.mount = mount;
    to.files.insert(to.files.end(), std::make_move_iterator(files->begin()),
                    std::make_move_iterator(files->end()));
}

}  // namespace dorix
