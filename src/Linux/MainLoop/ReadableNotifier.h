#pragma once

#include <QObject>

#include <cstdint>
#include <memory>

namespace orvanta {

/// Tells when a descriptor can be read, as QSocketNotifier does, for descriptors that seldom can:
/// all of a thread share one in the main loop's poll (epoll(7)), so that a wake-up for something
/// else does not visit each of them.
class ReadableNotifier final : public QObject {
    Q_OBJECT

public:
    /// Enabled. Needs a QCoreApplication, and a descriptor that is closed after this has gone.
    explicit ReadableNotifier(int descriptor);
    ~ReadableNotifier() override;
    ReadableNotifier(const ReadableNotifier&) = delete;
    ReadableNotifier& operator=(const ReadableNotifier&) = delete;

    bool isEnabled() const { return isEnabled_; }
    void setEnabled(bool enabled);

Q_SIGNALS:
    /// Again and again, as long as it can be read.
    void activated();

private:
    class Poll;

    int descriptor_;
    std::shared_ptr<Poll> poll_;
    std::uint64_t id_;
    bool isEnabled_ = false;
};

} // namespace orvanta
