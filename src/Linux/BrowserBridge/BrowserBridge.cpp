#include "Linux/BrowserBridge/BrowserBridge.h"

#include "Linux/MainLoop/ReadableNotifier.h"
#include "Linux/ProcessParent.h"
#include "Platform/PrivateFolder.h"

#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstring>
#include <utility>

namespace orvanta {

namespace {

// Off unless somebody looks for a fault: QT_LOGGING_RULES="orvanta.browsers=true".
Q_LOGGING_CATEGORY(browsers, "orvanta.browsers", QtWarningMsg)

// A profile is one; nobody has so many.
constexpr std::size_t mostConnections = 64;

QString systemError(const char* what) {
    return QStringLiteral("%1: %2").arg(QLatin1StringView(what), qt_error_string(errno));
}

QByteArray linkTarget(const QByteArray& path) {
    QByteArray target(PATH_MAX, '\0');
    const ssize_t size =
        ::readlink(path.constData(), target.data(), static_cast<std::size_t>(target.size()));
    target.truncate(std::max<ssize_t>(size, 0));
    // After an update the program runs on from a file that has no name any more.
    constexpr QByteArrayView deleted(" (deleted)");
    if (target.endsWith(deleted)) {
        target.chop(deleted.size());
    }
    return target;
}

} // namespace

BrowserBridge::BrowserBridge(Place place, BrowserConnection::Clock now, MayTell mayTell)
    : place_(std::move(place))
    , now_(std::move(now))
    , mayTell_(std::move(mayTell)) {
    setProblem(listen());
    if (!problem_.isEmpty()) {
        return;
    }
    notifier_ = std::make_unique<ReadableNotifier>(socket_);
    connect(notifier_.get(), &ReadableNotifier::activated, this, &BrowserBridge::accept);
}

BrowserBridge::~BrowserBridge() {
    connections_.clear();
    if (notifier_) {
        QFile::remove(place_.socket);
    }
    notifier_.reset();
    if (socket_ >= 0) {
        ::close(socket_);
    }
}

QString BrowserBridge::listen() {
    // The hosts call as soon as they see the socket, so it gets its name when it can be called.
    const QByteArray path = QFile::encodeName(place_.socket);
    const QByteArray early = path + ".new";
    sockaddr_un address{};
    if (path.isEmpty() || early.size() >= static_cast<qsizetype>(sizeof address.sun_path)) {
        return QStringLiteral("no socket can have this path: %1").arg(place_.socket);
    }
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, early.constData(), static_cast<std::size_t>(early.size()));

    const QString folder = QFileInfo(place_.socket).path();
    if (!makePrivateFolder(folder)) {
        return systemError("cannot make the socket's folder");
    }
    // What an earlier process of ours left is replaced; there is no other one now.
    struct stat there {};
    if (::lstat(path.constData(), &there) == 0 && !S_ISSOCK(there.st_mode)) {
        return QStringLiteral("something else stands at %1").arg(place_.socket);
    }
    ::unlink(early.constData());
    socket_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    constexpr int backlog = 16;
    if (socket_ < 0 ||
        ::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::chmod(early.constData(), S_IRUSR | S_IWUSR) != 0 || ::listen(socket_, backlog) != 0 ||
        ::rename(early.constData(), path.constData()) != 0) {
        return systemError("cannot listen");
    }
    return {};
}

void BrowserBridge::accept() {
    const int socket = ::accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
    if (socket < 0) {
        return;
    }
    QString reason;
    const auto process = identify(socket, reason);
    if (!process) {
        ::close(socket);
        setProblem(reason);
        return;
    }
    auto& connection =
        connections_.emplace_back(std::make_unique<BrowserConnection>(socket, *process, now_));
    connect(connection.get(), &BrowserConnection::saidSomething, this,
            [this, process = *process] { Q_EMIT saidSomething(process); });
    connect(connection.get(), &BrowserConnection::ended, this,
            [this, which = connection.get()](const QString& why) { remove(which, why); });
    // Whoever was agreed to before it called is allowed from now on.
    Q_EMIT connected(*process);
    tellAll();
}

void BrowserBridge::tellAll() {
    for (const auto& connection : connections_) {
        connection->setHeard(mayTell_(connection->browserProcess()));
    }
}

std::optional<qint64> BrowserBridge::identify(int socket, QString& reason) const {
    ucred peer{};
    socklen_t size = sizeof peer;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0 ||
        peer.uid != ::geteuid()) {
        reason = QStringLiteral("another user called");
        return std::nullopt;
    }
    const QByteArray folder =
        QFile::encodeName(place_.processes) + '/' + QByteArray::number(peer.pid);
    if (linkTarget(folder + "/exe") != QFile::encodeName(place_.hostExecutable)) {
        reason = QStringLiteral("another program called: process %1").arg(peer.pid);
        return std::nullopt;
    }
    const auto parent = parentOf(peer.pid, place_.processes);
    if (!parent) {
        reason = QStringLiteral("no browser started the host: process %1").arg(peer.pid);
        return std::nullopt;
    }
    if (connections_.size() >= mostConnections) {
        reason = QStringLiteral("too many hosts called");
        return std::nullopt;
    }
    return parent;
}

std::vector<BrowserConnection*> BrowserBridge::connections(qint64 browserProcess) const {
    std::vector<BrowserConnection*> result;
    for (const auto& connection : connections_) {
        if (connection->browserProcess() == browserProcess && connection->isHeard()) {
            result.push_back(connection.get());
        }
    }
    return result;
}

std::vector<qint64> BrowserBridge::browserProcesses() const {
    std::vector<qint64> result;
    for (const auto& connection : connections_) {
        if (std::ranges::find(result, connection->browserProcess()) == result.end()) {
            result.push_back(connection->browserProcess());
        }
    }
    return result;
}

void BrowserBridge::setProblem(const QString& problem) {
    problem_ = problem;
    if (!problem.isEmpty()) {
        qCInfo(browsers, "%s", qUtf8Printable(problem));
    }
}

void BrowserBridge::remove(BrowserConnection* connection, const QString& reason) {
    const auto found =
        std::ranges::find(connections_, connection, &std::unique_ptr<BrowserConnection>::get);
    if (found == connections_.end()) {
        return;
    }
    const qint64 process = connection->browserProcess();
    setProblem(reason);
    // It may be the one that is talking.
    found->release()->deleteLater();
    connections_.erase(found);
    Q_EMIT disconnected(process);
}

} // namespace orvanta
