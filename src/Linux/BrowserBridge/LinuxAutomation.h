#pragma once

#include "Linux/BrowserBridge/BrowserBridge.h"
#include "Linux/BrowserBridge/BrowserPreparation.h"
#include "Linux/BrowserBridge/BrowserTransport.h"
#include "Linux/BrowserBridge/LinuxAutomationPermission.h"
#include "Linux/BrowserBridge/PermissionPrompt.h"
#include "Linux/LinuxRunningApplications.h"

#include <QPointer>
#include <QString>

#include <functional>
#include <map>

namespace orvanta {

/// All that it takes to ask this desktop's browsers: the bridge that they call at, the transport
/// and the permission over it, and the question put to the person.
class LinuxAutomation final {
public:
    struct Surroundings {
        BrowserTransport::Surroundings transport;
        BrowserBridge::Place bridge;
        ApplicationIdentity identity;
        /// See `LinuxAutomationPermission`.
        std::function<QStringList(const QString& key)> load;
        std::function<void(const QString& key, const QStringList& identifiers)> store;
        /// As the person reads it.
        std::function<QString(const QString& bundleIdentifier)> name;
        BrowserPreparation preparation;
    };

    explicit LinuxAutomation(Surroundings surroundings);
    ~LinuxAutomation();
    LinuxAutomation(const LinuxAutomation&) = delete;
    LinuxAutomation& operator=(const LinuxAutomation&) = delete;

    const RunningApplications& runningApplications() const { return running_; }
    AppleEventTransport& transport() { return transport_; }
    LinuxAutomationPermission& permission() { return permission_; }

    /// Shows the question for a browser; one that is already shown stays.
    void ask(const QString& bundleIdentifier);

    /// Sees to it that the browsers which may call find the host where it is now.
    void renewPreparations();

private:
    PermissionPrompt::Preparation agree(const QString& bundleIdentifier);

    Surroundings surroundings_;
    BrowserBridge bridge_;
    LinuxRunningApplications running_;
    BrowserTransport transport_;
    LinuxAutomationPermission permission_;
    std::map<QString, QPointer<PermissionPrompt>> prompts_;
};

} // namespace orvanta
