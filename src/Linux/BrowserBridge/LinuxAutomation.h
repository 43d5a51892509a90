#pragma once

#include "Linux/Applications/LinuxApplicationLauncher.h"
#include "Linux/BrowserBridge/AutomationWindow.h"
#include "Linux/BrowserBridge/BrowserBridge.h"
#include "Linux/BrowserBridge/BrowserPreparation.h"
#include "Linux/BrowserBridge/BrowserTransport.h"
#include "Linux/BrowserBridge/LinuxAutomationPermission.h"
#include "Linux/BrowserBridge/PermissionPrompt.h"
#include "Linux/LinuxRunningApplications.h"
#include "Platform/Automation.h"

#include <QByteArray>
#include <QPointer>
#include <QString>
#include <QStringList>

#include <functional>
#include <map>
#include <set>
#include <vector>

namespace orvanta {

/// All that it takes to ask this desktop's browsers: the bridge that they call at, the transport
/// and the permission over it, what starts them, the question put to the person, and the window
/// that shows how things stand.
class LinuxAutomation final : public Automation {
public:
    struct Surroundings {
        BrowserTransport::Surroundings transport;
        BrowserBridge::Place bridge;
        ApplicationIdentity identity;
        /// See `LinuxAutomationPermission`.
        std::function<QStringList(const QString& key)> load;
        std::function<void(const QString& key, const QStringList& identifiers)> store;
        /// The bundle identifiers of those that can be decided about, in the order shown.
        std::function<QStringList()> browsers;
        /// As the person reads it.
        std::function<QString(const QString& bundleIdentifier)> name;
        BrowserPreparation preparation;
        DesktopEntries& entries;
        QByteArray display; ///< see `LinuxApplicationLauncher`
    };

    explicit LinuxAutomation(Surroundings surroundings);
    ~LinuxAutomation() override;

    const RunningApplications& runningApplications() const override { return running_; }
    AppleEventTransport& transport() override { return transport_; }
    LinuxAutomationPermission& permission() override { return permission_; }
    LinuxApplicationLauncher& launcher() override { return launcher_; }
    void renewPreparations() override;
    void setSilenced(std::set<QString> bundleIdentifiers) override;

    /// Shows the question for a browser, or what is left to do when it was agreed to. What is shown
    /// already comes to the front.
    void ask(const QString& bundleIdentifier);

    /// Shows the window "Automação"; one that is shown already comes to the front.
    void showWindow();

private:
    bool mayTell(qint64 browserProcess) const;
    std::vector<AutomationWindow::Row> rows() const;
    AutomationWindow::Missing missing(const QString& bundleIdentifier) const;
    void refuse(const QString& bundleIdentifier);
    PermissionPrompt::Preparation agree(const QString& bundleIdentifier);

    Surroundings surroundings_;
    std::set<QString> silenced_;
    BrowserBridge bridge_;
    LinuxRunningApplications running_;
    BrowserTransport transport_;
    LinuxAutomationPermission permission_;
    LinuxApplicationLauncher launcher_;
    QPointer<AutomationWindow> window_;
    std::map<QString, QPointer<PermissionPrompt>> prompts_;
};

} // namespace orvanta
