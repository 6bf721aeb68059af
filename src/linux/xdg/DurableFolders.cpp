#include "linux/xdg/DurableFolders.h"

#include "linux/loop/FileDescriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace dorix {

namespace fs = std::filesystem;

namespace {

class LockedFolder final : public FolderPublisher::Hold {
 public:
    explicit LockedFolder(FileDescriptor fd) : fd_(std::move(fd)) {}

 private:
    FileDescriptor fd_;
};

std::error_code lastError() { return {errno, std::generic_category()}; }

std::error_code syncAt(const fs::path& path) {
    const FileDescriptor fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    if (!fd || ::fsync(fd.get()) != 0) return lastError();
    return {};
}

/// All that is below a folder, and then the folder.
std::error_code syncAll(const fs::path& folder) {
    std::error_code error;
    for (fs::recursive_directory_iterator at(folder, error);
         !error && at != fs::recursive_directory_iterator(); at.increment(error)) {
        if (at->is_symlink(error)) continue;
        if (const auto failed = syncAt(at->path())) return failed;
    }
    return error ? error : syncAt(folder);
}

bool isThere(const fs::path& path) {
    struct stat status{};
    return ::lstat(path.c_str(), &status) == 0;
}

std::error_code moveInPlace(const fs::path& from, const fs::path& to) {
    if (isThere(to)) {
        if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_EXCHANGE) == 0) return {};
        return lastError();
    }
    return ::rename(from.c_str(), to.c_str()) == 0 ? std::error_code() : lastError();
}

}  // namespace

std::unique_ptr<FolderPublisher::Hold> DurableFolders::hold(const fs::path& folder) {
    FileDescriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!fd || ::flock(fd.get(), LOCK_EX | LOCK_NB) != 0) return nullptr;
    return std::make_unique<LockedFolder>(std::move(fd));
}

std::error_code DurableFolders::publish(const fs::path& from, const fs::path& to) {
    if (const auto error = syncAll(from)) return error;
    if (const auto error = moveInPlace(from, to)) return error;
    if (const auto error = syncAt(to.parent_path())) return error;
    return syncAt(from.parent_path());
}

}  // namespace dorix
