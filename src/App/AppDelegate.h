#pragma once

#include "Browsers/BrowserReader.h"
#include "Model/Calendar.h"
#include "Model/ModelContainer.h"
#include "Model/UserDefaults.h"
#include "Platform/Automation.h"
#include "Platform/Desktop.h"
#include "Platform/MainLoop.h"
#include "Platform/NotificationCenter.h"
#include "Platform/StatusItem.h"
#include "Setup/Setup.h"
#include "Tracking/Tracker.h"
#include "Views/PanelSurroundings.h"
#include "Views/PlainLabels.h"
#include "Views/Popover.h"
#include "Views/Text/StatusText.h"

#include <QObject>
#include <QPointer>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

class QMessageBox;

namespace orvanta {

class SettingsWindow;

/// The application's shell: puts the parts together at launch, shows them when they are asked for,
/// and brings them down in good order.
///
/// Orvanta is an accessory application: all it shows is the status item, and a popover that no task
/// bar lists. It is a regular one, with a window and a main menu, while the settings are open.
class AppDelegate final : public QObject {
public:
    struct Surroundings {
        Desktop& desktop;
        QString configurationFolder; ///< of the preferences
        QString dataFolder;          ///< in which the store has its folder
        Calendar calendar;
        /// Shows a modal alert and returns when it is closed.
        std::function<void(const QString& message, const QString& informativeText)> alert;
        /// Ends the application.
        std::function<void()> terminate;
    };

    /// What is referred to outlives the delegate.
    explicit AppDelegate(Surroundings surroundings);
    ~AppDelegate() override;
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Opens the store and starts tracking. False when the store cannot be opened: the person has
    /// been told, and the application is to end.
    bool applicationDidFinishLaunching();

    /// Somebody started Orvanta while it was running. Brings the settings back if they are open;
    /// where the desktop has no place for a status item, opens the panel. Says again what has to be
    /// said. Always false: there is nothing else to open.
    bool applicationShouldHandleReopen();

    /// Books and saves the running stretch; the application goes on, unless it ends.
    void save();

    /// Books and saves the running stretch. May be called again.
    void applicationWillTerminate();

    /// The same where the process has to end at once, for want of a display; touches nothing that
    /// is shown.
    void displayDidVanish();

    // What the status item and its menu do.

    /// A left click, at this place where the desktop tells one.
    void togglePopover(std::optional<QPoint> place);
    void toggleShowAll();
    void showSettings();

private:
    void windowWatchingChanged();
    DesktopProblem desktopProblem();
    void askForWindowWatching();
    /// In the place of the last one; to be shown once it has its buttons.
    QMessageBox& windowMessage(const QString& text, const QString& detail);
    StatusTotals statusTotals() const;
    void updateStatus();
    std::vector<StatusMenuItem> statusMenu();
    Setup::System setupSystem();
    std::vector<Browser> enabledBrowsers();

    void showPopover(bool isAsked = false);
    void popoverDidClose();
    void startPopoverDismissalMonitoring();
    void stopPopoverDismissalMonitoring();
    void mousePressed(QPoint place);
    void closeByPress(std::optional<QPoint> place);
    void applicationActivated();

    void installEditMenu(SettingsWindow& window);
    void windowWillClose();

    Surroundings surroundings_;
    PlainLabels plainLabels_;
    Desktop& desktop_;
    Platform platform_;
    UserDefaults defaults_;
    UserDefaults automationDefaults_;
    Calendar calendar_;
    std::unique_ptr<ModelContainer> container_;
    std::unique_ptr<Automation> automation_;
    std::unique_ptr<BrowserReader> reader_;
    std::unique_ptr<Tracker> tracker_;
    std::unique_ptr<StatusItem> status_;
    std::optional<StatusTitle> title_;
    std::unique_ptr<MainLoopTimer> historyTimer_;
    std::unique_ptr<Setup> setup_;
    std::unique_ptr<MainLoopTimer> setupTimer_;
    std::vector<Browser> browsers_; ///< that are installed, as of the uptime below
    std::optional<double> browsersRead_;

    Popover popover_;
    std::optional<QPoint> clicked_; ///< where the popover was last opened by a click
    std::unique_ptr<EventMonitor> outsideClickMonitor_;
    std::optional<NotificationCenter::Token> appActivationObserver_;
    struct Press {
        std::optional<QPoint> place;
        double uptime;
    };
    std::optional<Press> closingPress_; ///< the last press that closed the popover

    std::optional<WindowWatching> saidOfWindows_; ///< what the message below was last about
    QPointer<QMessageBox> windowMessage_;

    std::unique_ptr<SettingsWindow> settingsWindow_; ///< made when first shown
    std::unique_ptr<MainLoopTimer> refreshTimer_;
};

} // namespace orvanta
