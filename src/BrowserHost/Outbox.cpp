#include "BrowserHost/Outbox.h"

#include "Linux/BrowserBridge/FrameReader.h"

#include <unistd.h>

#include <cerrno>

namespace orvanta {

bool Outbox::add(std::string_view text) {
    const FrameHeader header = frameHeader(text.size());
    if (bytes_.size() + header.size() + text.size() > limit_) {
        return false;
    }
    bytes_.append(header.data(), header.size()).append(text);
    return true;
}

bool Outbox::flush(int descriptor) {
    while (!bytes_.empty()) {
        const ssize_t written = ::write(descriptor, bytes_.data(), bytes_.size());
        if (written < 0 && errno == EINTR) {
            continue;
        }
        if (written < 0) {
            return errno == EAGAIN;
        }
        bytes_.erase(0, static_cast<std::size_t>(written));
    }
    return true;
}

} // namespace orvanta
