#pragma once

#include "Linux/StatusNotifier/StatusMenu.h"
#include "Linux/StatusNotifier/StatusNotifierTypes.h"
#include "Platform/StatusItem.h"

#include <QDBusConnection>
#include <QDBusObjectPath>
#include <QDBusServiceWatcher>
#include <QObject>

class QDBusMessage;

namespace orvanta {

/// freedesktop.org's StatusNotifierItem, with the names that its hosts use (org.kde.*), and
/// Ayatana's label.
///
/// Comes and goes with the bus's StatusNotifierWatcher, in whatever order they start. Properties
/// are always current; a host is told of a change of the title, and otherwise at most once a
/// minute, by a call of `toolTipChanged` that falls after it: nothing here ever waits on a timer.
/// All calls on the bus are asynchronous.
class StatusNotifierItem final : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierItem")
    Q_PROPERTY(QString Category READ category CONSTANT)
    Q_PROPERTY(QString Id READ id CONSTANT)
    Q_PROPERTY(QString Title READ titleText)
    Q_PROPERTY(QString Status READ status CONSTANT)
    Q_PROPERTY(int WindowId READ windowId CONSTANT)
    Q_PROPERTY(QString IconName READ iconName CONSTANT)
    Q_PROPERTY(orvanta::StatusPixmaps IconPixmap READ iconPixmap)
    Q_PROPERTY(orvanta::StatusToolTip ToolTip READ toolTip)
    Q_PROPERTY(bool ItemIsMenu READ itemIsMenu CONSTANT)
    Q_PROPERTY(QDBusObjectPath Menu READ menu CONSTANT)
    Q_PROPERTY(QString XAyatanaLabel READ titleText)
    Q_PROPERTY(QString XAyatanaLabelGuide READ labelGuide CONSTANT)

public:
    /// Whether a host shows the item.
    enum class Host { Unknown, Absent, Present };

    struct Configuration {
        /// XDG_CURRENT_DESKTOP (freedesktop.org, "Recognized desktop environments"). Under GNOME
        /// no menu is offered: there a single click would open it instead of the panel.
        QString currentDesktop;
        /// Seconds on a clock that nobody sets.
        std::function<double()> uptime;
    };

    /// The connection may be one that failed or that fails later: no host is present then.
    StatusNotifierItem(QDBusConnection connection, StatusItem::Handlers handlers,
                       Configuration configuration);
    ~StatusNotifierItem() override;
    StatusNotifierItem(const StatusNotifierItem&) = delete;
    StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

    void setTitle(const StatusTitle& title);
    void toolTipChanged();

    Host host() const { return host_; }

    QString category() const { return QStringLiteral("ApplicationStatus"); }
    QString id() const { return QStringLiteral("com.brindlework.orvanta"); }
    QString titleText() const { return title_.text(); }
    QString status() const { return QStringLiteral("Active"); }
    int windowId() const { return 0; }
    QString iconName() const { return {}; }
    StatusPixmaps iconPixmap();
    StatusToolTip toolTip() const;
    bool itemIsMenu() const { return false; }
    QDBusObjectPath menu() const;
    QString labelGuide() const { return QStringLiteral("↑ 00/00"); }

public Q_SLOTS:
    Q_SCRIPTABLE void Activate(int x, int y);
    /// Where there is no menu, the same as a left click.
    Q_SCRIPTABLE void ContextMenu(int x, int y);
    Q_SCRIPTABLE void SecondaryActivate(int x, int y);
    Q_SCRIPTABLE void Scroll(int delta, const QString& orientation);

Q_SIGNALS:
    Q_SCRIPTABLE void NewTitle();
    Q_SCRIPTABLE void NewIcon();
    Q_SCRIPTABLE void NewToolTip();
    Q_SCRIPTABLE void XAyatanaNewLabel(const QString& label, const QString& guide);

    void hostChanged();

private Q_SLOTS:
    void readHost();
    void onWatcherGone();

private:
    using Reply = std::function<void(const QDBusMessage&)>;

    void onWatcherOwner(const QString& newOwner);
    void registerWithWatcher();
    void readWatcherProcess();
    void setHost(Host host);
    void call(const QDBusMessage& message, Reply reply);

    QDBusConnection connection_;
    StatusItem::Handlers handlers_;
    Configuration configuration_;
    bool offersMenu_;
    StatusMenu menu_;
    QString service_;
    QDBusServiceWatcher watcherWatcher_;
    Host host_ = Host::Unknown;
    quint64 watcherGeneration_ = 0; ///< answers of an earlier watcher count no more
    bool mayBeRead_ = false;        ///< there is a watcher, so that there may be a host
    bool showsWide_ = false;

    StatusTitle title_;
    StatusPixmaps pixmaps_; ///< of title_; empty: not drawn yet
    double toldAt_ = 0;     ///< uptime of the last signal that made hosts read the tooltip
};

} // namespace orvanta
