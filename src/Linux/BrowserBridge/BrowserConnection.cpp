#include "Linux/BrowserBridge/BrowserConnection.h"

#include "Linux/MainLoop/ReadableNotifier.h"

#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <limits>
#include <utility>

namespace orvanta {

namespace {

// A person who clicks through tabs makes ten messages a second.
constexpr int mostMessagesInASecond = 100;

} // namespace

BrowserConnection::BrowserConnection(int socket, qint64 browserProcess, Clock now)
    : socket_(socket)
    , browserProcess_(browserProcess)
    , now_(std::move(now))
    , notifier_(std::make_unique<ReadableNotifier>(socket)) {
    connect(notifier_.get(), &ReadableNotifier::activated, this, &BrowserConnection::receive);
}

BrowserConnection::~BrowserConnection() {
    notifier_.reset();
    ::close(socket_);
}

void BrowserConnection::ask() {
    question_ = question_ == std::numeric_limits<int>::max() ? 1 : question_ + 1;
    send(askFrame(question_));
}

void BrowserConnection::setHeard(bool heard) {
    if (isHeard_ != heard) {
        isHeard_ = heard;
        state_.reset();
        send(tellFrame(heard));
    }
}

void BrowserConnection::send(const QByteArray& frame) {
    ssize_t sent = 0;
    do {
        sent = ::send(socket_, frame.constData(), static_cast<std::size_t>(frame.size()),
                      MSG_DONTWAIT | MSG_NOSIGNAL);
    } while (sent < 0 && errno == EINTR);
    if (sent != frame.size()) {
        // A socket that has no room for twenty bytes has a reader that does not read.
        QMetaObject::invokeMethod(
            this, [this] { end(QStringLiteral("nobody takes what is asked and told")); },
            Qt::QueuedConnection);
    }
}

void BrowserConnection::receive() {
    std::array<char, longestFrame> buffer{};
    ssize_t size = 0;
    do {
        size = ::recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
    } while (size < 0 && errno == EINTR);
    if (size < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
        return;
    }
    if (size <= 0) {
        end(QStringLiteral("the host has gone"));
        return;
    }
    std::string_view bytes(buffer.data(), static_cast<std::size_t>(size));
    while (notifier_->isEnabled()) {
        const auto text = frames_.next(bytes);
        if (!text) {
            break;
        }
        hear(*text);
    }
    if (frames_.error() != FrameReader::Error::None) {
        const std::string_view reason = frames_.errorText();
        end(QString::fromLatin1(reason.data(), static_cast<qsizetype>(reason.size())));
    }
}

void BrowserConnection::hear(std::string_view text) {
    const double now = now_();
    if (now - second_ >= 1) {
        second_ = now;
        heard_ = 0;
    }
    if (++heard_ > mostMessagesInASecond) {
        end(QStringLiteral("too many messages"));
        return;
    }
    if (!isHeard()) {
        return;
    }
    const auto parsed = parseMessage(text);
    if (const auto* error = std::get_if<MessageError>(&parsed)) {
        end(error->reason);
        return;
    }
    const auto& message = std::get<ExtensionMessage>(parsed);
    if (!state_ || state_->focused != message.focused || state_->origin != message.origin) {
        state_ = state_.value_or(State());
        state_->changedAt = now;
    }
    state_->origin = message.origin;
    state_->focused = message.focused;
    state_->saidAt = now;
    if (message.focused) {
        state_->lastFocusedAt = now;
    }
    Q_EMIT saidSomething();
}

void BrowserConnection::end(const QString& reason) {
    if (notifier_->isEnabled()) {
        notifier_->setEnabled(false);
        Q_EMIT ended(reason);
    }
}

} // namespace orvanta
