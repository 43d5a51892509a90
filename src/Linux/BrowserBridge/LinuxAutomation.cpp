#include "Linux/BrowserBridge/LinuxAutomation.h"

#include <utility>

namespace orvanta {

LinuxAutomation::LinuxAutomation(Surroundings surroundings)
    : surroundings_(std::move(surroundings))
    , bridge_(surroundings_.bridge, surroundings_.transport.now)
    , running_(surroundings_.transport.workspace, surroundings_.transport.workspaceNotifications,
               surroundings_.identity, [this] { return bridge_.browserProcesses(); })
    , transport_(bridge_, surroundings_.transport)
    , permission_(bridge_, {surroundings_.load, surroundings_.store,
                            [this](const QString& identifier) { ask(identifier); },
                            [this](qint64 process) {
                                return running_.bundleIdentifier(process);
                            }}) {}

LinuxAutomation::~LinuxAutomation() {
    for (const auto& [identifier, prompt] : prompts_) {
        delete prompt;
    }
}

void LinuxAutomation::ask(const QString& bundleIdentifier) {
    QPointer<PermissionPrompt>& prompt = prompts_[bundleIdentifier];
    if (prompt) {
        prompt->raise();
        return;
    }
    prompt = new PermissionPrompt(surroundings_.name(bundleIdentifier),
                                  {[this, bundleIdentifier] { return agree(bundleIdentifier); },
                                   [this, bundleIdentifier] {
                                       permission_.refuse(bundleIdentifier);
                                       surroundings_.preparation.withdraw(bundleIdentifier);
                                   }});
    prompt->show();
}

PermissionPrompt::Preparation LinuxAutomation::agree(const QString& bundleIdentifier) {
    if (permission_.isConnected(bundleIdentifier)) {
        permission_.agree(bundleIdentifier);
        return {};
    }
    auto preparation = surroundings_.preparation.prepare(bundleIdentifier);
    if (preparation.next != PermissionPrompt::Preparation::Next::Failed) {
        permission_.agree(bundleIdentifier);
    }
    return preparation;
}

void LinuxAutomation::renewPreparations() {
    for (const char* key : {"agreed", "allowed"}) {
        for (const QString& identifier : surroundings_.load(QString::fromLatin1(key))) {
            surroundings_.preparation.renew(identifier);
        }
    }
}

} // namespace orvanta
