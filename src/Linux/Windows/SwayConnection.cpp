#include "Linux/Windows/SwayConnection.h"

#include "Linux/MainLoop/ReadableNotifier.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace orvanta {

namespace {

constexpr QByteArrayView magic("i3-ipc");
constexpr qsizetype headerLength = magic.size() + 2 * sizeof(std::uint32_t);

// A thousand windows take less than two.
constexpr std::uint32_t longestReply = 16 * 1024 * 1024;

/// Where the header has a number, in the machine's byte order.
std::uint32_t numberAt(const QByteArray& bytes, qsizetype index) {
    std::uint32_t number = 0;
    std::memcpy(&number, bytes.constData() + magic.size() + index * sizeof number, sizeof number);
    return number;
}

int connectTo(const QByteArray& path) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    if (path.isEmpty() || path.size() >= static_cast<qsizetype>(sizeof address.sun_path)) {
        return -1;
    }
    std::memcpy(address.sun_path, path.constData(), static_cast<std::size_t>(path.size()));
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (descriptor >= 0 &&
        ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        ::close(descriptor);
        return -1;
    }
    return descriptor;
}

} // namespace

SwayConnection::SwayConnection(const QByteArray& path)
    : socket_(connectTo(path)) {
    if (isOpen()) {
        readable_ = std::make_unique<ReadableNotifier>(socket_);
        connect(readable_.get(), &ReadableNotifier::activated, this, &SwayConnection::receive);
    }
}

SwayConnection::~SwayConnection() {
    readable_.reset();
    if (isOpen()) {
        ::close(socket_);
    }
}

void SwayConnection::send(Type type, const QByteArray& text) {
    if (!isOpen()) {
        return;
    }
    const std::array<std::uint32_t, 2> lengthAndType{static_cast<std::uint32_t>(text.size()), type};
    QByteArray message = magic.toByteArray();
    message.append(reinterpret_cast<const char*>(lengthAndType.data()), sizeof lengthAndType);
    message.append(text);
    ssize_t sent = 0;
    do {
        sent = ::send(socket_, message.constData(), static_cast<std::size_t>(message.size()),
                      MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    if (sent != message.size()) {
        // A socket without room for a few bytes has a reader that does not read.
        QMetaObject::invokeMethod(this, &SwayConnection::end, Qt::QueuedConnection);
    }
}

std::optional<QByteArray> SwayConnection::ask(Type type, QDeadlineTimer deadline) {
    std::optional<QByteArray> answer;
    const auto listening = connect(this, &SwayConnection::received, this,
                                   [&answer, type](std::uint32_t of, const QByteArray& text) {
                                       if (of == type) {
                                           answer = text;
                                       }
                                   });
    send(type);
    while (!answer && isOpen() && !deadline.hasExpired()) {
        pollfd readable{socket_, POLLIN, 0};
        if (::poll(&readable, 1, static_cast<int>(deadline.remainingTime())) > 0) {
            receive();
        }
    }
    disconnect(listening);
    return answer;
}

void SwayConnection::receive() {
    std::array<char, 65536> buffer{};
    ssize_t size = 0;
    do {
        size = ::recv(socket_, buffer.data(), buffer.size(), 0);
    } while (size < 0 && errno == EINTR);
    if (size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        return;
    }
    if (size <= 0) {
        end();
        return;
    }
    bytes_.append(buffer.data(), size);
    while (isOpen() && cut()) {
    }
}

/// Cuts a message off the front; false when more bytes are needed.
bool SwayConnection::cut() {
    const qsizetype seen = std::min(bytes_.size(), magic.size());
    if (QByteArrayView(bytes_).first(seen) != magic.first(seen)) {
        end();
        return false;
    }
    if (bytes_.size() < headerLength) {
        return false;
    }
    const std::uint32_t length = numberAt(bytes_, 0);
    if (length > longestReply) {
        end();
        return false;
    }
    if (bytes_.size() < headerLength + length) {
        return false;
    }
    const std::uint32_t type = numberAt(bytes_, 1);
    const QByteArray text = bytes_.sliced(headerLength, length);
    bytes_.remove(0, headerLength + length);
    Q_EMIT received(type, text);
    return true;
}

void SwayConnection::end() {
    if (isOpen()) {
        readable_->setEnabled(false);
        ::close(std::exchange(socket_, -1));
        bytes_.clear();
        Q_EMIT ended();
    }
}

} // namespace orvanta
