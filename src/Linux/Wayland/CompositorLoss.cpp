#include "Linux/Wayland/CompositorLoss.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QMessageLogContext>
#include <QThread>

#include <unistd.h>
#include <wayland-client-core.h>

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>
#include <utility>

namespace orvanta {

namespace {

constexpr const char* startedAnew = "--after-compositor-loss";
constexpr std::chrono::milliseconds betweenAttempts{100};
// A compositor that drops us at once would do it again.
constexpr qint64 tooSoon = 5'000;
// In milliseconds, as the above. Of the main thread, when another was the first to notice.
constexpr unsigned long mainThreadPatience = 5'000;

// A message handler reaches nothing but globals.
std::function<void()> save;
QElapsedTimer sinceStart;
QtMessageHandler writeMessage = nullptr;

/// Returns only where the program cannot or should not be started anew.
void begin() {
    if (!save) {
        return;
    }
    std::exchange(save, nullptr)();
    if (sinceStart.hasExpired(tooSoon)) {
        const QByteArray program = QFile::encodeName(QCoreApplication::applicationFilePath());
        const std::array<const char*, 3> arguments{program.constData(), startedAnew, nullptr};
        ::execv(program.constData(), const_cast<char* const*>(arguments.data()));
    }
}

void listen(QtMsgType type, const QMessageLogContext& context, const QString& message) {
    writeMessage(type, context, message);
    if (!message.startsWith(QLatin1String("The Wayland connection "))) {
        return;
    }
    if (QThread::currentThread() == QCoreApplication::instance()->thread()) {
        begin();
        return;
    }
    // The main thread notices as well, or is told here; what it does meanwhile is not cut short.
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [] {
            begin();
            ::_exit(EXIT_FAILURE);
        },
        Qt::QueuedConnection);
    QThread::msleep(mainThreadPatience);
}

} // namespace

bool CompositorLoss::isBehind(int argc, char* const argv[]) {
    return argc == 2 && std::strcmp(argv[1], startedAnew) == 0;
}

bool CompositorLoss::waitForCompositor() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(patience);
    while (std::chrono::steady_clock::now() < deadline) {
        if (wl_display* display = wl_display_connect(nullptr)) {
            wl_display_disconnect(display);
            return true;
        }
        std::this_thread::sleep_for(betweenAttempts);
    }
    return false;
}

CompositorLoss::CompositorLoss(std::function<void()> saveFirst) {
    save = std::move(saveFirst);
    sinceStart.start();
    writeMessage = qInstallMessageHandler(listen);
}

CompositorLoss::~CompositorLoss() {
    qInstallMessageHandler(writeMessage);
    save = nullptr;
}

} // namespace orvanta
