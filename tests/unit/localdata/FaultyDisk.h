#pragma once

#include "sqlite/Sqlite.h"

#include <array>
#include <climits>

namespace dorix {

/// The disk as SQLite finds it while this lives, for files that are opened and closed meanwhile: from some
/// call on, what writes, cuts or syncs a file fails half done.
class FaultyDisk {
 public:
    enum class Opens { all, readOnly, nothingBeside };

    /// Fails `lasting` times after `good` calls.
    FaultyDisk(int good, int lasting) : FaultyDisk(Opens::all) {
        good_ = good;
        lasting_ = lasting;
    }
    explicit FaultyDisk(Opens opens) {
        opens_ = opens;
        good_ = INT_MAX;
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
        realFile_ = file->pMethods;
        auto& methods = methods_.at(isMain ? 0 : 1);
        methods = *realFile_;
        methods.xWrite = [](sqlite3_file* to, const void* data, int size, sqlite3_int64 at) {
            const bool fails = failsNow();
            const int written = realFile_->xWrite(to, data, fails ? size / 2 : size, at);
            return fails ? SQLITE_FULL : written;
        };
        methods.xTruncate = [](sqlite3_file* cut, sqlite3_int64 size) {
            return failsNow() ? SQLITE_IOERR_TRUNCATE : realFile_->xTruncate(cut, size);
        };
        methods.xSync = [](sqlite3_file* synced, int how) {
            return failsNow() ? SQLITE_IOERR_FSYNC : realFile_->xSync(synced, how);
        };
        file->pMethods = &methods;
        return SQLITE_OK;
    }
    static bool failsNow() {
        if (good_-- > 0 || failed == lasting_) return false;
        ++failed;
        return true;
    }

    static inline Opens opens_ = Opens::all;
    static inline int good_ = 0;
    static inline int lasting_ = 0;
    static inline sqlite3_vfs* real_ = nullptr;
    static inline sqlite3_vfs disk_{};
    static inline const sqlite3_io_methods* realFile_ = nullptr;  // the newest, all write alike
    static inline std::array<sqlite3_io_methods, 2> methods_{};   // only a database can be locked
};

}  // namespace dorix
