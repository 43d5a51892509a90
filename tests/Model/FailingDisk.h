#pragma once

namespace orvanta {

/// SQLite's file system while this exists, on which one change of a file fails: a write (of which
/// half is carried out), a truncation, a synchronisation or a deletion. Nothing waits for the disk.
class FailingDisk {
public:
    enum class Failure { Once, FromThenOn };

    FailingDisk();
    ~FailingDisk();
    FailingDisk(const FailingDisk&) = delete;
    FailingDisk& operator=(const FailingDisk&) = delete;

    /// Counts from 1.
    void failAt(int change, Failure failure);
    void repair();
    bool hasFailed() const;
};

} // namespace orvanta
