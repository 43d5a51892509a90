#include "BrowserHost/SocketWatch.h"

#include <sys/inotify.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

namespace orvanta {

SocketWatch::SocketWatch(std::string runtimeFolder)
    : runtimeFolder_(std::move(runtimeFolder))
    , folder_(runtimeFolder_ + "/com.brindlework.orvanta")
    , socketPath_(folder_ + "/browsers")
    , events_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)) {
    watch();
}

bool SocketWatch::take() {
    bool mayHaveAppeared = false;
    alignas(inotify_event) std::array<char, 4096> buffer{};
    for (;;) {
        const ssize_t got = ::read(events_.number(), buffer.data(), buffer.size());
        if (got < 0 && errno == EINTR) {
            continue;
        }
        if (got <= 0) {
            break;
        }
        for (std::size_t at = 0; at < static_cast<std::size_t>(got);) {
            inotify_event event{};
            std::memcpy(&event, buffer.data() + at, sizeof event);
            at += sizeof event + event.len;
            // That the runtime folder's watch was removed is our own doing.
            mayHaveAppeared |= (event.mask & IN_IGNORED) == 0 || event.wd == folderWatch_;
            if (event.wd == folderWatch_ && (event.mask & IN_MOVE_SELF) != 0) {
                // It is watched on under its new name, where nobody will look for the socket.
                ::inotify_rm_watch(events_.number(), folderWatch_);
            }
            if (event.wd == folderWatch_ && (event.mask & (IN_MOVE_SELF | IN_IGNORED)) != 0) {
                folderWatch_ = -1;
            } else if (event.wd == runtimeWatch_ && (event.mask & IN_IGNORED) != 0) {
                runtimeWatch_ = -1;
            }
        }
    }
    watch();
    return mayHaveAppeared;
}

void SocketWatch::watch() {
    constexpr unsigned appearance = IN_CREATE | IN_MOVED_TO | IN_ONLYDIR;
    constexpr unsigned inFolder = appearance | IN_ATTRIB | IN_MOVE_SELF;
    if (folderWatch_ >= 0) {
        return;
    }
    // The runtime folder first: the other may appear between the two calls.
    if (runtimeWatch_ < 0) {
        runtimeWatch_ = add(runtimeFolder_, appearance);
    }
    folderWatch_ = add(folder_, inFolder);
    if (folderWatch_ >= 0 && runtimeWatch_ >= 0) {
        ::inotify_rm_watch(events_.number(), std::exchange(runtimeWatch_, -1));
    }
}

int SocketWatch::add(const std::string& path, unsigned mask) const {
    return ::inotify_add_watch(events_.number(), path.c_str(), mask);
}

} // namespace orvanta
