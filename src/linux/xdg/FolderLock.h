#pragma once

#include <filesystem>

namespace dorix {

/// Keeps other processes that lock the same folder out while it lives. On the folder, not on a file in it:
/// files there are replaced, and a lock file would be one more to explain. Blocks for a second at most: then,
/// and on a file system without locks, it is held by nobody, as a process that was stopped while holding it
/// must not stop all others. Any thread.
class FolderLock {
 public:
    explicit FolderLock(const std::filesystem::path& folder);
    ~FolderLock();
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

 private:
    int fd_;
};

}  // namespace dorix
