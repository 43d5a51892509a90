#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QDeadlineTimer>
#include <QString>

#include <functional>

namespace orvanta {

/// Makes sure that one process works on a folder of data, and hands a second start over to it.
///
/// The lock is the kernel's (`flock` on a file in the folder): it holds while the first process
/// hangs, and is gone with it however it ends, also between two sessions of one person. The
/// hand-over is a call of `org.freedesktop.Application.Activate` (freedesktop.org, "D-Bus
/// Activation") on the session bus, which may be absent.
class SingleInstance final : public QDBusVirtualObject {
public:
    /// Takes the lock if it is free. Without a folder to put it in there is no lock, and this
    /// counts as the first: opening the data will tell what is wrong.
    ///
    /// `patience`: milliseconds that the first is given to answer a hand-over.
    SingleInstance(const QString& folder, const QString& busName, const QDBusConnection& bus,
                   int patience = 2000);
    ~SingleInstance() override;
    SingleInstance(const SingleInstance&) = delete;
    SingleInstance& operator=(const SingleInstance&) = delete;

    bool isFirst() const { return isFirst_; }

    /// For the first: `activated` is called whenever the application is started again.
    void listen(std::function<void()> activated);

    /// For another: asks the first to show itself and calls `done` with whether it answered.
    void handOver(std::function<void(bool answered)> done);

    QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    void ask(QDeadlineTimer deadline, std::function<void(bool answered)> done);
    QString objectPath() const;

    QString busName_;
    QDBusConnection bus_;
    int patience_;
    int lock_ = -1;
    bool isFirst_ = true;
    std::function<void()> activated_;
};

} // namespace orvanta
