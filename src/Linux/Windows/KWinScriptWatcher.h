#pragma once

#include "Linux/Presence/BusService.h"
#include "Linux/Windows/WindowWatcher.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

#include <memory>

class QDBusVirtualObject;

namespace orvanta {

/// The active window of KWin as a script of ours tells it from within KWin, which loads it on
/// request (D-Bus, `org.kde.kwin.Scripting`; KWin's scripting API of Plasma 5 and 6). It is for a
/// KWin that does not offer its list of windows to this program. What anybody else says is not
/// heard.
class KWinScriptWatcher final : public WindowWatcher {
    Q_OBJECT

public:
    /// Waiting until a KWin is there and its script has told something; Unsupported where the
    /// script cannot be written or loaded. `folder`, which nobody else can write to, is made when
    /// it is not there; empty where there is none.
    KWinScriptWatcher(QDBusConnection sessionBus, MainLoop& mainLoop, QString folder);
    /// Takes the script away again.
    ~KWinScriptWatcher() override;
    KWinScriptWatcher(const KWinScriptWatcher&) = delete;
    KWinScriptWatcher& operator=(const KWinScriptWatcher&) = delete;

private:
    void load();
    bool write() const;
    QString file() const;
    void hear(const QDBusMessage& call);
    void leave();

    QDBusConnection bus_;
    QString folder_;
    std::unique_ptr<QDBusVirtualObject> ear_;
    BusService service_;
};

} // namespace orvanta
