#pragma once

#include "base/Observable.h"
#include "base/async/Task.h"
#include "download/FileFetch.h"
#include "download/RemoteFile.h"
#include "platform/FolderPublisher.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

namespace dorix {

/// How far the downloads of one install have come, for those who wait for it. Main executor.
class DownloadProgress {
 public:
    /// 0 to 1.
    Observers<double> observers;

    /// Of how many bytes all files are.
    void begin(std::uint64_t whole);
    /// How much of the file on its way is there.
    void tell(std::uint64_t held);
    /// A file is complete.
    void add(std::uint64_t bytes);
    void end();

 private:
    std::uint64_t whole_ = 0;
    std::uint64_t done_ = 0;  // of the files that are complete
    double told_ = -1;
};

/// A folder of files from the web, on its way onto this computer: it appears there whole or not at all. What
/// has come waits in another folder meanwhile, also for a later time when it is cut short.
class FolderInstall {
 public:
    struct Places {
        std::filesystem::path parts;   // what has come; on the same disk
        std::filesystem::path folder;  // where it goes
    };

    FolderInstall(RemoteFiles files, Places places) : files_(std::move(files)), places_(std::move(places)) {}

    // These block on the disk; any thread. They throw InstallError.

    /// Whether the folder is there with those files, to the last byte. Reads all of them.
    bool isInstalled() const;
    /// Whether it looks so, by the files' sizes.
    bool looksInstalled() const;
    /// Makes the folder for the parts and keeps others out of it. `others` is what else needs space, in
    /// bytes.
    void begin(FolderPublisher& folders, std::uint64_t others = 0);
    /// Puts the folder in place, with `record` beside the files when it has a name.
    void finish(FolderPublisher& folders, const std::string& recordName = {}, const std::string& record = {});

    /// Gets what is missing. Main executor; all that it is given outlives it. Throws InstallError.
    Task<void> fetch(const FileFetch& fetch, const Mirrors& mirrors, DownloadProgress& progress) const;

    /// How much is still to come, and how much there is in all, in bytes. Any thread, looks at the disk.
    std::uint64_t missing() const;
    std::uint64_t bytes() const;

 private:
    const RemoteFiles files_;
    const Places places_;
    std::unique_ptr<FolderPublisher::Hold> hold_;
};

/// One file, by way of its mirror. Main executor.
Task<void> fetchMirrored(const FileFetch& fetch, RemoteFile file, std::filesystem::path to,
                         const Mirrors& mirrors, DownloadProgress& progress);

// What installs need of the disk, on which all of it blocks. Any thread.

/// Bytes that are left to everybody else.
inline constexpr std::uint64_t spareSpace = 50'000'000;
/// Where a folder is, or is going to be, in bytes.
std::uint64_t freeSpaceAt(std::filesystem::path place);
/// Throws InstallError.
void makeFolder(const std::filesystem::path& folder);
/// What cannot be removed is logged.
void removeAll(const std::filesystem::path& path);
/// A folder that goes at once for all who look, however long the deleting takes. Throws InstallError.
void removeFolder(const std::filesystem::path& folder);
/// Throws InstallError.
void writeWhole(const std::filesystem::path& file, const std::string& text);
bool isPlainFile(const std::filesystem::path& path);
/// 0 where there is none.
std::uint64_t sizeOf(const std::filesystem::path& file);

}  // namespace dorix
