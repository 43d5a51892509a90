#pragma once

#include "Linux/Applications/DesktopEntries.h"
#include "Platform/ApplicationLauncher.h"
#include "Platform/MainLoop.h"

#include <QByteArray>
#include <QObject>
#include <QString>

#include <functional>

namespace orvanta {

/// Starts what has a desktop entry, whose path is its location. What it starts lives on without
/// Orvanta.
class LinuxApplicationLauncher final : public ApplicationLauncher {
public:
    struct Surroundings {
        DesktopEntries& entries;
        MainLoop& mainLoop;
        /// Of the X server that is this desktop's; elsewhere empty, and nothing can be hidden.
        QByteArray display;
        /// Told of each process as soon as it runs.
        std::function<void(qint64 process, const QString& bundleIdentifier)> started;
        /// Shows where the permissions of browsers are managed.
        std::function<void()> showAutomation;
    };

    /// What is referred to outlives this.
    explicit LinuxApplicationLauncher(Surroundings surroundings);
    ~LinuxApplicationLauncher() override;

    /// One that is to be hidden is complete when its first window is out of sight, it has ended,
    /// or ten seconds have passed.
    void openApplication(const QString& location, const OpenConfiguration& configuration,
                         std::function<void()> completion) override;
    bool open(const QString& address) override;

private:
    Surroundings surroundings_;
    QObject launches_; ///< parent of those under way
};

} // namespace orvanta
