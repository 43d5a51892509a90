// What sway sends, from its socket to the window with the focus.

#include "Compositor.h"
#include "Fuzz.h"
#include "Linux/Windows/SwayConnection.h"
#include "Linux/Windows/SwayTree.h"

#include <QJsonDocument>

using namespace orvanta;

int LLVMFuzzerTestOneInput(const char* data, std::size_t size) {
    static int argc = 0;
    static const QCoreApplication application(argc, nullptr);
    static const Listener listener;
    const QByteArray bytes(data, qsizetype(size));
    focusedWindow(QJsonDocument::fromJson(bytes).object());

    SwayConnection connection(listener.path());
    QObject::connect(&connection, &SwayConnection::received,
                     [](std::uint32_t /*type*/, const QByteArray& text) {
                         focusedWindow(QJsonDocument::fromJson(text).object());
                     });
    const int sway = ::accept(listener.descriptor(), nullptr, nullptr);
    ::send(sway, data, size, MSG_NOSIGNAL | MSG_DONTWAIT);
    ::close(sway);
    while (connection.ask(SwayConnection::GetTree, QDeadlineTimer(QDeadlineTimer::Forever))) {
    }
    require(!connection.isOpen());
    return 0;
}
