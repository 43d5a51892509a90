#include "BrowserHost/Relay.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <csignal>
#include <cstdlib>
#include <utility>

namespace {

using orvanta::Descriptor;

/// Makes sure that 0, 1 and 2 are taken, so that no socket ends up where a stray print goes.
bool fillStandardStreams() {
    int number = 0;
    do {
        number = ::open("/dev/null", O_RDWR);
    } while (number >= 0 && number <= STDERR_FILENO);
    if (number < 0) {
        return false;
    }
    ::close(number);
    return true;
}

/// The stream under a number of its own, in non-blocking mode. `substitute` takes its place.
Descriptor moveAside(int stream, int substitute) {
    Descriptor moved(::fcntl(stream, F_DUPFD_CLOEXEC, STDERR_FILENO + 1));
    const int flags = ::fcntl(moved.number(), F_GETFL);
    if (flags < 0 || ::fcntl(moved.number(), F_SETFL, flags | O_NONBLOCK) < 0 ||
        ::dup2(substitute, stream) < 0) {
        return {};
    }
    return moved;
}

} // namespace

int main() {
    std::signal(SIGPIPE, SIG_IGN);
    // The default action ends it, and nothing needs tidying up; a browser may have left it ignored.
    std::signal(SIGTERM, SIG_DFL);
    if (!fillStandardStreams()) {
        return EXIT_FAILURE;
    }
    Descriptor output = moveAside(STDOUT_FILENO, STDERR_FILENO);
    const Descriptor nothing(::open("/dev/null", O_RDONLY | O_CLOEXEC));
    Descriptor input = moveAside(STDIN_FILENO, nothing.number());
    if (!output.isOpen() || !input.isOpen()) {
        orvanta::complain("no streams to a browser");
        return EXIT_FAILURE;
    }

    const char* runtimeFolder = std::getenv("XDG_RUNTIME_DIR");
    if (runtimeFolder == nullptr || *runtimeFolder != '/') {
        orvanta::complain("XDG_RUNTIME_DIR does not name a folder");
        return EXIT_FAILURE;
    }
    orvanta::SocketWatch watch(runtimeFolder);
    if (!watch.isWatching()) {
        orvanta::complain("XDG_RUNTIME_DIR cannot be watched");
        return EXIT_FAILURE;
    }
    return orvanta::Relay(std::move(input), std::move(output), std::move(watch)).run();
}
