#pragma once

#include "Platform/Platform.h"
#include "Platform/ScreenArea.h"
#include "Platform/StatusItem.h"
#include "Platform/WindowWatching.h"

#include <QObject>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <QTimeZone>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QWindow;

namespace orvanta {

class Appearance;
class Automation;
class Bundles;
class LoginItem;

/// Something that is watched as long as this lives.
class EventMonitor {
public:
    virtual ~EventMonitor() = default;
    EventMonitor(const EventMonitor&) = delete;
    EventMonitor& operator=(const EventMonitor&) = delete;

protected:
    EventMonitor() = default;
};

/// The desktop that the application lives on: what its shell asks for, each by its own port.
///
/// Everything that it hands out or refers to is gone before it is.
class Desktop : public QObject {
    Q_OBJECT

public:
    virtual Platform platform() = 0;
    /// Seconds on a clock that never goes back and stands still while the machine sleeps.
    virtual double uptime() const = 0;

    virtual const Bundles& bundles() const = 0;
    virtual LoginItem& loginItem() = 0;

    struct AutomationDecisions {
        /// Keep lists of bundle identifiers.
        std::function<QStringList(const QString& key)> load;
        std::function<void(const QString& key, const QStringList& identifiers)> store;
        /// The bundle identifiers of the browsers that can be decided about, in the order shown.
        std::function<QStringList()> browsers;
    };
    /// Begins to listen for other applications. To be called once.
    virtual std::unique_ptr<Automation> makeAutomation(AutomationDecisions decisions) = 0;

    /// The application's one place in the status area, shown as soon as the desktop has one.
    virtual std::unique_ptr<StatusItem> makeStatusItem(StatusItem::Handlers handlers) = 0;

    /// Begins to announce absence and the day change on the notification centres, first of all what
    /// already holds. To be called once, when those who want to hear it observe the centres.
    virtual void startPresence() = 0;

    virtual WindowWatching windowWatching() const = 0;
    /// The person has agreed to what WindowWatching::NeedsPermission is about. Returns why it could
    /// not be done, in words to be shown; nothing is left half done then.
    virtual std::optional<QString> allowWindowWatching() = 0;
    virtual const Appearance& appearance() const = 0;

    /// All monitors, the main one first; asked of the desktop anew. Empty when there is none.
    virtual std::vector<ScreenArea> screenAreas() const = 0;
    /// Where the pointer is now, in the same coordinates; absent where the desktop tells nobody.
    virtual std::optional<QPoint> pointerPosition() const = 0;
    /// Calls `handler` with the place of every press of a mouse button, in whichever application,
    /// as long as the monitor lives. The press reaches whom it is meant for all the same. Null
    /// where the desktop tells nobody of others' presses.
    virtual std::unique_ptr<EventMonitor>
    addGlobalMonitorForMouseDowns(std::function<void(QPoint)> handler) = 0;
    /// What has come to the front until now is announced before this returns, where the desktop can
    /// be asked; it may have to be waited for.
    virtual void updateFrontmost() = 0;
    /// Whether a popup goes where it is put, gets the clicks outside it and leaves the window
    /// behind it the active one. What is not a popup is placed by the desktop.
    virtual bool placesPopups() const = 0;
    /// Puts the top left corner of a window that is not a popup, and has been shown just now, at a
    /// place, if the desktop lets that be. For one window.
    virtual void place(QWindow& window, QPoint place) = 0;
    /// Whoever types into this window by a grab of the keyboard, the application does not become
    /// the active one by it. For one window; it exists already.
    virtual void keepInactive(QWindow& window) = 0;
    /// Brings a window that is shown to the front, whoever has the keyboard now.
    virtual void activate(QWindow& window) = 0;

Q_SIGNALS:
    void windowWatchingChanged();
    /// The local time zone is another. Comes before the day change that is announced because of it.
    void timeZoneChanged(const QTimeZone& zone);

protected:
    Desktop() = default;
};

} // namespace orvanta
