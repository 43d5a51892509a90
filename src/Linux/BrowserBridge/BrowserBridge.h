#pragma once

#include "Linux/BrowserBridge/BrowserConnection.h"

#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <vector>

namespace orvanta {

/// Where the hosts of the browsers call: a Unix socket that only this person's hosts are let in on.
///
/// A connection is known by the process that started the host, as the kernel tells it; what the
/// other end says of itself is not asked.
class BrowserBridge final : public QObject {
    Q_OBJECT

public:
    struct Place {
        QString socket;                              ///< path of the socket
        QString hostExecutable;                      ///< the only program that may call
        QString processes = QStringLiteral("/proc"); ///< of the process file system
    };
    /// Whether the person wants the sites of the browser with this process to be told.
    using MayTell = std::function<bool(qint64 browserProcess)>;

    /// Listens at once; a socket that an earlier process left is replaced, and anything else that
    /// stands there stays. Where it cannot listen, `problem()` tells why.
    BrowserBridge(Place place, BrowserConnection::Clock now, MayTell mayTell);
    ~BrowserBridge() override;
    BrowserBridge(const BrowserBridge&) = delete;
    BrowserBridge& operator=(const BrowserBridge&) = delete;

    bool isListening() const { return notifier_ != nullptr; }

    /// Why the last connection was refused or ended, or nobody can call: in English, for a log.
    const QString& problem() const { return problem_; }

    /// Asks anew who may tell, and tells the browsers. To be called when that changes.
    void tellAll();

    /// The profiles of the browser with this process, of those that may tell; valid until control
    /// returns to the main loop.
    std::vector<BrowserConnection*> connections(qint64 browserProcess) const;
    /// The processes of all browsers that are connected, each once, whether they may tell or not.
    std::vector<qint64> browserProcesses() const;

Q_SIGNALS:
    void connected(qint64 browserProcess);
    void disconnected(qint64 browserProcess);
    /// One of this browser's profiles has told its state.
    void saidSomething(qint64 browserProcess);

private:
    QString listen();
    void accept();
    /// The browser that started the host at the other end, or nothing and why it is not let in.
    std::optional<qint64> identify(int socket, QString& reason) const;
    void setProblem(const QString& problem);
    void remove(BrowserConnection* connection, const QString& reason);

    Place place_;
    BrowserConnection::Clock now_;
    MayTell mayTell_;
    int socket_ = -1;
    std::unique_ptr<ReadableNotifier> notifier_;
    std::vector<std::unique_ptr<BrowserConnection>> connections_;
    QString problem_;
};

} // namespace orvanta
