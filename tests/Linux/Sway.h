#pragma once

#include "Compositor.h"
#include "Linux/Windows/SwayConnection.h"
#include "Testing.h"

#include <mutex>
#include <thread>

namespace orvanta {

/// Sway's interface to one client at a time, on a thread of its own, as some wait for it. Answers
/// what a test says; where that is nothing, not at all.
class Sway {
public:
    using Type = std::uint32_t;

    ~Sway() {
        ::shutdown(listener_.descriptor(), SHUT_RDWR);
        thread_.join();
    }

    const QByteArray& path() const { return listener_.path(); }
    void answer(Type type, const QByteArray& text) {
        const std::scoped_lock lock(mutex_);
        answers_[type] = text;
    }
    void ignore(Type type) {
        const std::scoped_lock lock(mutex_);
        answers_.erase(type);
    }
    /// What has come of this type.
    std::vector<QByteArray> asked(Type type) {
        const std::scoped_lock lock(mutex_);
        return asked_[type];
    }
    /// In vain to one who has gone.
    void send(const QByteArray& bytes) const {
        ::send(client_, bytes.constData(), std::size_t(bytes.size()), MSG_NOSIGNAL);
    }
    void drop() const { ::shutdown(client_, SHUT_RDWR); }

    static QByteArray message(Type type, const QByteArray& text) {
        const std::array header{Type(text.size()), type};
        return "i3-ipc" + QByteArray(reinterpret_cast<const char*>(header.data()), sizeof header) +
               text;
    }

private:
    void serve() {
        int client = -1;
        while ((client = ::accept(listener_.descriptor(), nullptr, nullptr)) >= 0) {
            client_ = client;
            std::array<char, 6> magic{};
            std::array<Type, 2> header{}; // length and type
            while (::recv(client_, magic.data(), magic.size(), MSG_WAITALL) == sizeof magic &&
                   ::recv(client_, header.data(), sizeof header, MSG_WAITALL) == sizeof header) {
                const auto [length, type] = header;
                QByteArray text(length, '\0');
                if (length > 0) { // For nothing it would wait.
                    ::recv(client_, text.data(), length, MSG_WAITALL);
                }
                const std::scoped_lock lock(mutex_);
                asked_[type].push_back(text);
                if (const auto found = answers_.find(type); found != answers_.end()) {
                    send(message(type, found->second));
                }
            }
            ::close(client);
        }
    }

    Listener listener_;
    std::atomic<int> client_ = -1;
    std::mutex mutex_;
    std::map<Type, QByteArray> answers_;
    std::map<Type, std::vector<QByteArray>> asked_;
    std::thread thread_{&Sway::serve, this};
};

} // namespace orvanta
