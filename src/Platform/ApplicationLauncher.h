#pragma once

#include <QString>

#include <functional>

namespace orvanta {

/// Starts applications and opens addresses.
class ApplicationLauncher {
public:
    /// How an application comes up, as far as the desktop can do it.
    struct OpenConfiguration {
        bool activates = true; ///< comes to the front
        bool hides = false;    ///< its windows are out of sight
    };

    virtual ~ApplicationLauncher() = default;
    ApplicationLauncher(const ApplicationLauncher&) = delete;
    ApplicationLauncher& operator=(const ApplicationLauncher&) = delete;

    /// Starts the application that is installed at this location. `completion` is called exactly
    /// once, when the application runs or could not be started, perhaps at once.
    virtual void openApplication(const QString& location, const OpenConfiguration& configuration,
                                 std::function<void()> completion) = 0;

    /// Opens the address in what the desktop or the platform has for it; false when that is
    /// nothing.
    virtual bool open(const QString& address) = 0;

protected:
    ApplicationLauncher() = default;
};

} // namespace orvanta
