#pragma once

#include "Linux/BrowserBridge/FrameReader.h"
#include "Platform/Automation.h"
#include "Testing.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>

namespace orvanta {

inline void settle() {
    constexpr int steps = 20;
    for (int i = 0; i < steps; ++i) {
        QCoreApplication::processEvents();
    }
}

/// Tells the host of the site in front of this browser once it is known, "none", or "failed".
inline void readSite(AppleEventTransport& transport, qint64 process,
                     const std::function<void(const QString&)>& tell) {
    transport.send(
        {.eventClass = fourCharCode("core"),
         .eventID = fourCharCode("getd"),
         .target = EventDescriptor::processIdentifier(static_cast<int>(process)),
         .parameters = {{AppleEvent::directObject, EventDescriptor::record()}}},
        0, AppleEventTransport::Duration(2), [tell](const std::optional<AppleEvent>& reply) {
            const auto* site = reply ? reply->parameter(AppleEvent::directObject) : nullptr;
            tell(!reply ? u"failed"_s : site ? site->stringValue()->section(u'/', -1) : u"none"_s);
        });
}

/// The other end of a connection.
class Host {
public:
    explicit Host(const QString& path)
        : socket_(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        EXPECT_EQ(::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
        settle();
    }
    ~Host() { ::close(socket_); }
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    void send(const QByteArray& bytes) {
        const auto size = static_cast<std::size_t>(bytes.size());
        EXPECT_EQ(::send(socket_, bytes.constData(), size, MSG_NOSIGNAL), bytes.size());
        settle();
    }
    void say(const QByteArray& origin, bool focused, int answer = 0) {
        const QByteArray json =
            QByteArray("{\"v\":1,\"origin\":") + (origin.isEmpty() ? "null" : '"' + origin + '"') +
            ",\"focused\":" + (focused ? "true" : "false") +
            (answer != 0 ? ",\"answer\":" + QByteArray::number(answer) : QByteArray()) + '}';
        const FrameHeader header = frameHeader(static_cast<std::size_t>(json.size()));
        send(QByteArray(header.data(), header.size()) + json);
    }

    /// All that it was sent since the last look, the frames' headers with it.
    QByteArray heard() {
        settle();
        QByteArray bytes(4096, '\0');
        bytes.truncate(std::max<ssize_t>(::recv(socket_, bytes.data(), 4096, 0), 0));
        return bytes;
    }
    bool isClosed() {
        settle();
        pollfd polled{socket_, 0, 0};
        return ::poll(&polled, 1, 0) == 1 && (polled.revents & (POLLHUP | POLLERR)) != 0;
    }

private:
    int socket_;
};

} // namespace orvanta
