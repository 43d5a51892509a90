#include "Linux/TerminationSignals.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>

namespace orvanta {

namespace {

constexpr std::array terminating{SIGTERM, SIGINT, SIGHUP};

// A signal handler reaches nothing but globals.
volatile int wakeUp = -1;

extern "C" void noteSignal(int /*signal*/) {
    const int saved = errno;
    const eventfd_t one = 1;
    [[maybe_unused]] const auto written = ::write(wakeUp, &one, sizeof one);
    errno = saved;
}

int openEvent() {
    wakeUp = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    return wakeUp;
}

} // namespace

TerminationSignals::TerminationSignals()
    : notifier_(openEvent()) {
    connect(&notifier_, &ReadableNotifier::activated, this, [this] {
        eventfd_t count = 0;
        ::eventfd_read(wakeUp, &count);
        Q_EMIT received();
    });
    struct sigaction action {};
    action.sa_handler = noteSignal;
    action.sa_flags = SA_RESTART;
    for (const int signal : terminating) {
        ::sigaction(signal, &action, nullptr);
    }
}

TerminationSignals::~TerminationSignals() {
    for (const int signal : terminating) {
        ::signal(signal, SIG_DFL);
    }
    ::close(wakeUp);
}

} // namespace orvanta
