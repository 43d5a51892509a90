#include "BrowserHost/Relay.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <optional>
#include <string>
#include <utility>

namespace orvanta {

namespace {

// One reading of either side.
constexpr std::size_t chunk = 4096;

// Orvanta is asked for nothing else while the browser has not taken these.
constexpr std::size_t browserLimit = chunk + sizeof(FrameHeader) + longestFrame;

// Some hundred messages, beyond what the kernel holds: Orvanta hangs.
constexpr std::size_t orvantaLimit = 65'536;

constexpr short gone = POLLERR | POLLHUP | POLLNVAL;

/// Bytes read into the buffer; 0 at the end of the stream, absent when there are none yet.
std::optional<std::size_t> readSome(int descriptor, std::array<char, chunk>& buffer) {
    ssize_t got = 0;
    do {
        got = ::read(descriptor, buffer.data(), buffer.size());
    } while (got < 0 && errno == EINTR);
    if (got < 0 && errno == EAGAIN) {
        return std::nullopt;
    }
    return got < 0 ? 0 : static_cast<std::size_t>(got);
}

} // namespace

Relay::Relay(Descriptor fromBrowser, Descriptor toBrowser, SocketWatch watch)
    : browserInput_(std::move(fromBrowser))
    , browserOutput_(std::move(toBrowser))
    , watch_(std::move(watch))
    , toBrowser_(browserLimit)
    , toOrvanta_(orvantaLimit) {}

int Relay::run() {
    connect();
    for (;;) {
        short socketEvents = toBrowser_.isEmpty() ? POLLIN : 0;
        if (!toOrvanta_.isEmpty()) {
            socketEvents |= POLLOUT;
        }
        // What happens in the folder while there is a connection waits until there is none: a
        // successor's socket can appear before the predecessor's end is seen.
        std::array<pollfd, 4> polled{{
            {browserInput_.number(), POLLIN, 0},
            {browserOutput_.number(), short(toBrowser_.isEmpty() ? 0 : POLLOUT), 0},
            {socket_.number(), socketEvents, 0},
            {socket_.isOpen() ? -1 : watch_.descriptor(), POLLIN, 0},
        }};
        if (::poll(polled.data(), polled.size(), -1) < 0) {
            if (errno == EINTR) {
                continue;
            }
            complain("cannot wait for anything");
            return 1;
        }
        const auto& [input, output, orvanta, folder] = polled;
        if ((output.revents & gone) != 0 ||
            ((output.revents & POLLOUT) != 0 && !toBrowser_.flush(browserOutput_.number()))) {
            return 0;
        }
        if ((orvanta.revents & POLLOUT) != 0) {
            sendToOrvanta();
        }
        if (socket_.isOpen() && (orvanta.revents & (POLLIN | gone)) != 0) {
            readOrvanta();
        }
        if ((folder.revents & POLLIN) != 0 && watch_.take()) {
            connect();
        }
        if (input.revents != 0) {
            const End end = readBrowser();
            if (end != End::None) {
                return end == End::BrokenFrame ? 1 : 0;
            }
        }
    }
}

Relay::End Relay::readBrowser() {
    std::array<char, chunk> buffer{};
    const auto got = readSome(browserInput_.number(), buffer);
    if (!got) {
        return End::None;
    }
    if (*got == 0) {
        return End::BrowserGone;
    }
    std::string_view bytes(buffer.data(), *got);
    while (const auto text = fromBrowser_.next(bytes)) {
        if (!socket_.isOpen()) {
            connect();
        }
        if (socket_.isOpen() && !toOrvanta_.add(*text)) {
            disconnect("Orvanta does not read");
            // It finds this one when it reads again, and asks.
            connect();
        }
    }
    sendToOrvanta();
    if (fromBrowser_.error() != FrameReader::Error::None) {
        complain(std::string("the browser sent ").append(fromBrowser_.errorText()));
        return End::BrokenFrame;
    }
    return End::None;
}

void Relay::readOrvanta() {
    if (!toBrowser_.isEmpty()) {
        // Not read while the browser is slow, and yet reported: Orvanta has gone.
        disconnect({});
        return;
    }
    std::array<char, chunk> buffer{};
    const auto got = readSome(socket_.number(), buffer);
    if (!got) {
        return;
    }
    if (*got == 0) {
        disconnect({});
        return;
    }
    std::string_view bytes(buffer.data(), *got);
    while (const auto text = fromOrvanta_.next(bytes)) {
        // There is room for all that one reading can bring.
        static_cast<void>(toBrowser_.add(*text));
    }
    if (fromOrvanta_.error() != FrameReader::Error::None) {
        disconnect(std::string("Orvanta sent ").append(fromOrvanta_.errorText()));
    }
    // If the browser is gone, the next poll says so.
    static_cast<void>(toBrowser_.flush(browserOutput_.number()));
}

void Relay::connect() {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string& path = watch_.socketPath();
    if (path.size() >= sizeof address.sun_path) {
        return; // There is no such address, and nobody listens at it.
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    Descriptor candidate(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // Fails while Orvanta does not run or, its queue being full, hangs.
    if (!candidate.isOpen() ||
        ::connect(candidate.number(), reinterpret_cast<const sockaddr*>(&address),
                  sizeof address) != 0) {
        return;
    }
    ucred listener{};
    socklen_t size = sizeof listener;
    if (::getsockopt(candidate.number(), SOL_SOCKET, SO_PEERCRED, &listener, &size) != 0 ||
        listener.uid != ::geteuid()) {
        complain("the socket is another person's");
        return;
    }
    socket_ = std::move(candidate);
}

void Relay::disconnect(std::string_view reason) {
    if (!reason.empty()) {
        complain(std::string("connection to Orvanta ended: ").append(reason));
    }
    socket_.close();
    toOrvanta_.clear();
    fromOrvanta_ = {};
}

void Relay::sendToOrvanta() {
    if (socket_.isOpen() && !toOrvanta_.flush(socket_.number())) {
        disconnect({});
    }
}

void complain(std::string_view sentence) {
    std::fprintf(stderr, "orvanta-browser-host: %.*s\n", int(sentence.size()), sentence.data());
}

} // namespace orvanta
