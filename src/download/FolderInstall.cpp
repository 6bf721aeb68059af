#include "download/FolderInstall.h"

#include "base/Log.h"
#include "base/Sha256.h"
#include "download/InstallError.h"

#include <algorithm>
#include <fstream>
#include <system_error>
#include <utility>
#include <vector>

namespace dorix {

namespace fs = std::filesystem;

namespace {

constexpr double smallestStep = 0.001;  // of the progress that is told

[[noreturn]] void failed(const std::error_code& error) { throw InstallError::of(error); }

/// An earlier version of what comes may have stood in the folder.
void keepOnly(const fs::path& folder, const RemoteFiles& files) {
    std::vector<fs::path> others;
    try {
        for (const auto& entry : fs::recursive_directory_iterator(folder)) {
            const auto path = fs::relative(entry.path(), folder).generic_string();
            if (!entry.is_directory() && !files.contains(path)) others.push_back(entry.path());
        }
    } catch (const fs::filesystem_error& error) {
        failed(error.code());
    }
    for (const auto& other : others) removeAll(other);
}

}  // namespace

void DownloadProgress::begin(std::uint64_t whole) {
    whole_ = whole;
    tell(0);
}

void DownloadProgress::tell(std::uint64_t held) {
    const auto fraction =
        whole_ == 0 ? 1 : std::min(1.0, static_cast<double>(done_ + held) / static_cast<double>(whole_));
    if (fraction < told_ + smallestStep && fraction < 1) return;
    told_ = fraction;
    observers.notify(fraction);
}

void DownloadProgress::add(std::uint64_t bytes) {
    done_ += bytes;
    tell(0);
}

void DownloadProgress::end() {
    done_ = whole_;
    tell(0);
}

std::uint64_t FolderInstall::bytes() const {
    std::uint64_t sum = 0;
    for (const auto& [path, file] : files_) sum += file.bytes;
    return sum;
}

std::uint64_t FolderInstall::missing() const {
    std::uint64_t sum = 0;
    for (const auto& [path, file] : files_)
        sum += file.bytes - std::min(file.bytes, sizeOf(places_.parts / path));
    return sum;
}

bool FolderInstall::looksInstalled() const {
    return std::ranges::all_of(files_, [&](const auto& entry) {
        const auto place = places_.folder / entry.first;
        return isPlainFile(place) && sizeOf(place) == entry.second.bytes;
    });
}

bool FolderInstall::isInstalled() const {
    return looksInstalled() && std::ranges::all_of(files_, [&](const auto& entry) {
               return sha256OfFile(places_.folder / entry.first) == entry.second.sha256;
           });
}

void FolderInstall::begin(FolderPublisher& folders, std::uint64_t others) {
    const auto needed = missing() + others + spareSpace;
    const auto free = freeSpaceAt(places_.folder.parent_path());
    if (free < needed) throw InstallError::tooLittleSpace(needed, free);
    for (const auto& [path, file] : files_) makeFolder((places_.parts / path).parent_path());
    hold_ = folders.hold(places_.parts);
    if (!hold_) throw InstallError(InstallError::Case::underWayElsewhere);
}

Task<void> FolderInstall::fetch(const FileFetch& fetch, const Mirrors& mirrors,
                                DownloadProgress& progress) const {
    for (const auto& [path, file] : files_)
        co_await fetchMirrored(fetch, file, places_.parts / path, mirrors, progress);
}

void FolderInstall::finish(FolderPublisher& folders, const std::string& recordName,
                           const std::string& record) {
    keepOnly(places_.parts, files_);
    if (!recordName.empty()) writeWhole(places_.parts / recordName, record);
    if (const auto error = folders.publish(places_.parts, places_.folder)) failed(error);
    removeAll(places_.parts);  // what it replaced
}

Task<void> fetchMirrored(const FileFetch& fetch, RemoteFile file, fs::path to, const Mirrors& mirrors,
                         DownloadProgress& progress) {
    file.url = mirrored(file.url, mirrors);
    const auto bytes = file.bytes;
    co_await fetch.fetch(std::move(file), std::move(to),
                         [&progress](std::uint64_t held) { progress.tell(held); });
    progress.add(bytes);
}

std::uint64_t freeSpaceAt(fs::path place) {
    std::error_code error;
    while (!fs::exists(place, error) && place.has_relative_path()) place = place.parent_path();
    const auto space = fs::space(place, error);
    return error ? 0 : space.available;
}

void makeFolder(const fs::path& folder) {
    std::error_code error;
    fs::create_directories(folder, error);
    if (error) failed(error);
}

void removeAll(const fs::path& path) {
    std::error_code error;
    fs::remove_all(path, error);
    if (error) logLine(path.string() + " could not be deleted: " + error.message());
}

void removeFolder(const fs::path& folder) {
    const auto aside = folder.parent_path() / (".removed-" + folder.filename().string());
    std::error_code error;
    removeAll(aside);
    if (!fs::exists(fs::symlink_status(folder, error))) return;
    fs::rename(folder, aside, error);
    if (error) failed(error);
    removeAll(aside);
}

void writeWhole(const fs::path& file, const std::string& text) {
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream << text;
    stream.close();
    if (!stream) failed(std::make_error_code(std::errc::io_error));
}

bool isPlainFile(const fs::path& path) {
    std::error_code ignored;
    return fs::is_regular_file(fs::symlink_status(path, ignored));
}

std::uint64_t sizeOf(const fs::path& file) {
    std::error_code error;
    const auto size = fs::file_size(file, error);
    return error ? 0 : size;
}

}  // namespace dorix
