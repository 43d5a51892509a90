#include "Linux/MainLoop/ReadableNotifier.h"

#include <QSocketNotifier>

#include <sys/epoll.h>
#include <unistd.h>

#include <array>
#include <unordered_map>

namespace orvanta {

/// One of a thread, as long as somebody needs it.
class ReadableNotifier::Poll {
public:
    static std::shared_ptr<Poll> ofThisThread() {
        static thread_local std::weak_ptr<Poll> shared;
        auto poll = shared.lock();
        if (!poll) {
            poll = std::make_shared<Poll>();
            shared = poll;
        }
        return poll;
    }

    Poll()
        : descriptor_(::epoll_create1(EPOLL_CLOEXEC))
        , readable_(descriptor_, QSocketNotifier::Read) {
        if (descriptor_ < 0) {
            qFatal("No epoll instance"); // As Qt does without its own descriptors.
        }
        QObject::connect(&readable_, &QSocketNotifier::activated, &readable_, [this] { tell(); });
    }
    ~Poll() {
        readable_.setEnabled(false);
        ::close(descriptor_);
    }
    Poll(const Poll&) = delete;
    Poll& operator=(const Poll&) = delete;

    std::uint64_t add(ReadableNotifier& notifier) {
        notifiers_.emplace(++lastId_, &notifier);
        return lastId_;
    }
    void remove(std::uint64_t id) { notifiers_.erase(id); }

    void watch(int descriptor, std::uint64_t id) const {
        epoll_event event{};
        event.events = EPOLLIN;
        event.data.u64 = id;
        ::epoll_ctl(descriptor_, EPOLL_CTL_ADD, descriptor, &event);
    }
    /// What is only not asked about would still tell of its peer's end.
    void unwatch(int descriptor) const {
        ::epoll_ctl(descriptor_, EPOLL_CTL_DEL, descriptor, nullptr);
    }

private:
    void tell() {
        const auto alive = ofThisThread(); // Who is told may remove the last notifier.
        std::array<epoll_event, 8> events{};
        const int count =
            ::epoll_wait(descriptor_, events.data(), static_cast<int>(events.size()), 0);
        for (int index = 0; index < count; ++index) {
            // A copy: the structure is packed, so that a reference to its member is not aligned.
            const std::uint64_t id = events.at(static_cast<std::size_t>(index)).data.u64;
            // One may remove or disable another.
            const auto found = notifiers_.find(id);
            if (found != notifiers_.end() && found->second->isEnabled()) {
                Q_EMIT found->second->activated();
            }
        }
    }

    int descriptor_;
    QSocketNotifier readable_;
    std::unordered_map<std::uint64_t, ReadableNotifier*> notifiers_;
    std::uint64_t lastId_ = 0;
};

ReadableNotifier::ReadableNotifier(int descriptor)
    : descriptor_(descriptor)
    , poll_(Poll::ofThisThread())
    , id_(poll_->add(*this)) {
    setEnabled(true);
}

ReadableNotifier::~ReadableNotifier() {
    setEnabled(false);
    poll_->remove(id_);
}

void ReadableNotifier::setEnabled(bool enabled) {
    if (enabled == isEnabled_) {
        return;
    }
    isEnabled_ = enabled;
    if (enabled) {
        poll_->watch(descriptor_, id_);
    } else {
        poll_->unwatch(descriptor_);
    }
}

} // namespace orvanta
