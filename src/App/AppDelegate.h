#pragma once

#include "Browsers/BrowserReader.h"
#include "Linux/BrowserBridge/LinuxAutomation.h"
#include "Model/Calendar.h"
#include "Model/ModelContainer.h"
#include "Model/UserDefaults.h"
#include "Platform/MainLoop.h"
#include "Platform/StatusItem.h"
#include "Tracking/Tracker.h"

#include <QObject>

#include <memory>
#include <optional>
#include <vector>

namespace orvanta {

class LinuxPlatform;

/// The application's shell: puts the parts together at launch and brings them down in good order.
class AppDelegate final : public QObject {
public:
    /// The platform outlives the delegate.
    explicit AppDelegate(LinuxPlatform& platform);
    ~AppDelegate() override;
    AppDelegate(const AppDelegate&) = delete;
    AppDelegate& operator=(const AppDelegate&) = delete;

    /// Opens the store and starts tracking. False when the store cannot be opened: the person has
    /// been told, and the application is to end.
    bool applicationDidFinishLaunching();

    /// Somebody started Orvanta while it was running: what has to be said is said again.
    void applicationWasStartedAgain();

    /// Books and saves the running stretch. May be called again.
    void applicationWillTerminate();

private:
    void windowWatchingChanged();
    void updateStatus();
    std::vector<StatusMenuItem> statusMenu() const;

    LinuxPlatform& platform_;
    UserDefaults defaults_;
    Calendar calendar_;
    UserDefaults automationDefaults_;
    std::unique_ptr<ModelContainer> container_;
    std::unique_ptr<LinuxAutomation> automation_;
    std::unique_ptr<BrowserReader> reader_;
    std::unique_ptr<Tracker> tracker_;
    std::unique_ptr<StatusItem> status_;
    std::optional<StatusTitle> title_;
    QString toolTip_;
    std::unique_ptr<MainLoopTimer> historyTimer_;
};

} // namespace orvanta
