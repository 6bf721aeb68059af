#pragma once

#include "sqlite/Sqlite.h"

#include <array>
#include <climits>
#include <utility>

namespace dorix {

/// The disk as SQLite finds it while this lives, for files that are opened and closed meanwhile. Of the calls
/// that write or sync a file, those from number `good` on fail half done, until `lasting` have failed.
class FaultyDisk {
 public:
    enum class Opens { all, readOnly, nothingBeside };

    explicit FaultyDisk(Opens opens, int good = INT_MAX, int lasting = 0) {
        opens_ = opens;
        good_ = good;
        lasting_ = lasting;
        failed = 0;
        real_ = sqlite3_vfs_find(nullptr);
        disk_ = *real_;
        disk_.zName = "faulty";
        disk_.xOpen = open;
        sqlite3_vfs_register(&disk_, 1);
    }
    ~FaultyDisk() { sqlite3_vfs_unregister(&disk_); }
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    static inline int failed = 0;

 private:
    static int open(sqlite3_vfs* /*disk*/, const char* name, sqlite3_file* file, int flags, int* opened) {
        const bool isMain = (flags & SQLITE_OPEN_MAIN_DB) != 0;
        if (opens_ == Opens::nothingBeside && !isMain) return SQLITE_CANTOPEN;
        if (opens_ != Opens::all && isMain) {
            flags = (flags & ~(SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE)) | SQLITE_OPEN_READONLY;
        }
        const int result = real_->xOpen(real_, name, file, flags, opened);
        if (result != SQLITE_OK) return result;
        auto& methods = methods_.at(isMain ? 0 : 1);
        methods = *file->pMethods;
        realWrite_ = std::exchange(methods.xWrite, write);
        realSync_ = std::exchange(methods.xSync, sync);
        file->pMethods = &methods;
        return SQLITE_OK;
    }
    static int write(sqlite3_file* file, const void* data, int size, sqlite3_int64 at) {
        if (!failsNow()) return realWrite_(file, data, size, at);
        realWrite_(file, data, size / 2, at);
        return SQLITE_FULL;
    }
    static int sync(sqlite3_file* file, int how) {
        return failsNow() ? SQLITE_IOERR_FSYNC : realSync_(file, how);
    }
    static bool failsNow() { return --good_ < 0 && failed < lasting_ && ++failed > 0; }

    static inline Opens opens_ = Opens::all;
    static inline int good_ = 0;
    static inline int lasting_ = 0;
    static inline sqlite3_vfs* real_ = nullptr;
    static inline sqlite3_vfs disk_{};
    static inline std::array<sqlite3_io_methods, 2> methods_{};  // only a database can be locked
    static inline decltype(sqlite3_io_methods::xWrite) realWrite_ = nullptr;
    static inline decltype(sqlite3_io_methods::xSync) realSync_ = nullptr;
};

}  // namespace dorix
