#include "Browsers/BrowserReader.h"
#include "Fakes/FakeBundles.h"
#include "Fakes/FakeWorkspace.h"
#include "Fakes/HandMainLoop.h"
#include "Linux/BrowserBridge/BrowserBridge.h"
#include "Linux/BrowserBridge/BrowserTransport.h"
#include "Linux/LinuxRunningApplications.h"
#include "Linux/SystemClock.h"
#include "Tracking/Classification.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace orvanta;

namespace {

class Permitted final : public AutomationPermission {
public:
    int determine(const EventDescriptor& /*target*/, FourCharCode /*eventClass*/,
                  FourCharCode /*eventID*/, bool /*askUser*/) override {
        return permitted;
    }
};

/// What each second in front of a browser costs: a read that is answered from what it told.
void readFromTheState(benchmark::State& state) {
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    const QTemporaryDir folder;
    const QString socketPath = folder.filePath(QStringLiteral("browsers"));
    // This process is the host, and its own parent the browser.
    const QString host = QFile::symLinkTarget(QStringLiteral("/proc/self/exe"));
    BrowserBridge bridge({socketPath, host}, systemUptime, [](qint64) { return true; });

    const int connection = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    qstrncpy(address.sun_path, QFile::encodeName(socketPath).constData(), sizeof address.sun_path);
    ::connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address);
    const QByteArray message = "{\"v\":1,\"origin\":\"https://example.org\",\"focused\":true}";
    const FrameHeader header = frameHeader(static_cast<std::size_t>(message.size()));
    const QByteArray frame = QByteArray(header.data(), header.size()) + message;
    if (::write(connection, frame.constData(), static_cast<std::size_t>(frame.size())) < 0) {
        state.SkipWithError("cannot write");
    }

    FakeWorkspace workspace;
    workspace.front = RunningApplication{QStringLiteral("browser"), {}, {}, ::getppid()};
    NotificationCenter center;
    HandMainLoop loop;
    BrowserTransport transport(bridge, {workspace, center, loop, systemUptime, [] {
                                            return false;
                                        }});
    DesktopEntries entries({folder.path()});
    const LinuxRunningApplications running(workspace, center,
                                           ApplicationIdentity(entries, ::getpid(), {}),
                                           [&bridge] { return bridge.browserProcesses(); });
    FakeBundles bundles;
    bundles.install(QStringLiteral("/browser"), {}, "code=\"acTa\" code=\"URL \"");
    Permitted permission;
    BrowserReader reader(bundles, running, transport, permission, Classification::host);
    for (int i = 0; i < 10; ++i) {
        QCoreApplication::processEvents();
    }
    for ([[maybe_unused]] auto _ : state) {
        bool isAnswered = false;
        reader.read(QStringLiteral("browser"), [&](const BrowserReading::Answer& answer) {
            isAnswered = true;
            if (!answer.site) {
                state.SkipWithError(qPrintable(*answer.error));
            }
        });
        while (!isAnswered) {
            QCoreApplication::processEvents();
        }
    }
    ::close(connection);
}
BENCHMARK(readFromTheState)->MinTime(0.2)->Unit(benchmark::kMicrosecond);

} // namespace
