#include "FailingDisk.h"

#include <sqlite3.h>

#include <limits>
#include <list>

namespace orvanta {

namespace {

constexpr int never = std::numeric_limits<int>::max();

// SQLite calls plain functions.
sqlite3_vfs* real = nullptr;
sqlite3_vfs failing;
/// Of each file that was opened.
struct Methods {
    sqlite3_io_methods failing;
    const sqlite3_io_methods* real;
};
std::list<Methods> files;
int changes = 0;
int first = never;
int last = never;
bool failed = false;

bool fails() {
    ++changes;
    const bool result = changes >= first && changes <= last;
    failed = failed || result;
    return result;
}

const sqlite3_io_methods* realOf(sqlite3_file* file) {
    return reinterpret_cast<const Methods*>(file->pMethods)->real;
}

int write(sqlite3_file* file, const void* bytes, int size, sqlite3_int64 offset) {
    if (fails()) {
        realOf(file)->xWrite(file, bytes, size / 2, offset);
        return SQLITE_FULL;
    }
    return realOf(file)->xWrite(file, bytes, size, offset);
}

int truncate(sqlite3_file* file, sqlite3_int64 size) {
    return fails() ? SQLITE_IOERR_TRUNCATE : realOf(file)->xTruncate(file, size);
}

int sync(sqlite3_file*, int) {
    return fails() ? SQLITE_IOERR_FSYNC : SQLITE_OK;
}

int remove(sqlite3_vfs*, const char* name, int) {
    return fails() ? SQLITE_IOERR_DELETE : real->xDelete(real, name, 0);
}

int open(sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    const int result = real->xOpen(vfs, name, file, flags, outFlags);
    if (result == SQLITE_OK) {
        Methods& methods = files.emplace_back(Methods{*file->pMethods, file->pMethods});
        methods.failing.xWrite = write;
        methods.failing.xTruncate = truncate;
        methods.failing.xSync = sync;
        file->pMethods = &methods.failing;
    }
    return result;
}

} // namespace

FailingDisk::FailingDisk() {
    real = sqlite3_vfs_find(nullptr);
    failing = *real;
    failing.zName = "failing";
    failing.xOpen = open;
    failing.xDelete = remove;
    sqlite3_vfs_register(&failing, 1);
    repair();
}

FailingDisk::~FailingDisk() {
    sqlite3_vfs_unregister(&failing);
    sqlite3_vfs_register(real, 1);
    files.clear();
}

void FailingDisk::failAt(int change, Failure failure) {
    changes = 0;
    failed = false;
    first = change;
    last = failure == Failure::Once ? change : never;
}

void FailingDisk::repair() {
    first = never;
    last = never;
}

bool FailingDisk::hasFailed() const {
    return failed;
}

} // namespace orvanta
