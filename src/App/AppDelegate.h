#pragma once

#include "Model/Calendar.h"
#include "Model/ModelContainer.h"
#include "Model/UserDefaults.h"
#include "Tracking/Tracker.h"
#include "UnknownBrowsers.h"

#include <QObject>

#include <memory>

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

    /// Books and saves the running stretch. May be called again.
    void applicationWillTerminate();

private:
    void windowWatchingChanged();

    LinuxPlatform& platform_;
    UserDefaults defaults_;
    Calendar calendar_;
    UnknownBrowsers reader_;
    std::unique_ptr<ModelContainer> container_;
    std::unique_ptr<Tracker> tracker_;
};

} // namespace orvanta
