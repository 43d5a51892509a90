#pragma once

#include <sqlite3.h>

#include <limits>
#include <list>

namespace orvanta {

/// SQLite's file system while this exists, on which one change of a file fails, or all from one on:
/// a write (of which half is carried out), a truncation, a synchronisation or a deletion. Nothing
/// waits for the disk.
class FailingDisk {
public:
    FailingDisk() {
        failing_ = *real_;
        failing_.zName = "failing";
        failing_.xOpen = open;
        failing_.xDelete = [](sqlite3_vfs*, const char* name, int) {
            return fails() ? SQLITE_IOERR_DELETE : real_->xDelete(real_, name, 0);
        };
        sqlite3_vfs_register(&failing_, 1);
    }
    ~FailingDisk() {
        sqlite3_vfs_unregister(&failing_);
        sqlite3_vfs_register(real_, 1);
        files_.clear();
    }
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// Counts from 1.
    static void failAt(int change, bool onlyOnce) {
        changes_ = 0;
        hasFailed_ = false;
        first_ = change;
        last_ = onlyOnce ? change : never;
    }
    static void repair() { first_ = never; }
    static bool hasFailed() { return hasFailed_; }

private:
    static constexpr int never = std::numeric_limits<int>::max();
    /// Of each file that was opened.
    struct Methods {
        sqlite3_io_methods failing;
        const sqlite3_io_methods* real;
    };

    static bool fails() {
        ++changes_;
        const bool result = changes_ >= first_ && changes_ <= last_;
        hasFailed_ |= result;
        return result;
    }
    static const sqlite3_io_methods* realOf(sqlite3_file* file) {
        return reinterpret_cast<const Methods*>(file->pMethods)->real;
    }
    static int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
        const bool isFull = fails();
        const int result = realOf(file)->xWrite(file, bytes, isFull ? size / 2 : size, offset);
        return isFull ? SQLITE_FULL : result;
    }
    static int truncate(sqlite3_file* file, sqlite3_int64 size) {
        return fails() ? SQLITE_IOERR_TRUNCATE : realOf(file)->xTruncate(file, size);
    }
    static int sync(sqlite3_file*, int) { return fails() ? SQLITE_IOERR_FSYNC : SQLITE_OK; }
    static int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* out) {
        const int result = real_->xOpen(vfs, name, file, flags, out);
        if (result == SQLITE_OK) {
            Methods& methods = files_.emplace_back(Methods{*file->pMethods, file->pMethods});
            methods.failing.xWrite = write;
            methods.failing.xTruncate = truncate;
            methods.failing.xSync = sync;
            file->pMethods = &methods.failing;
        }
        return result;
    }

    // SQLite calls plain functions.
    static inline sqlite3_vfs* const real_ = sqlite3_vfs_find(nullptr);
    static inline sqlite3_vfs failing_;
    static inline std::list<Methods> files_;
    static inline int changes_ = 0;
    static inline int first_ = never;
    static inline int last_ = never;
    static inline bool hasFailed_ = false;
};

} // namespace orvanta
