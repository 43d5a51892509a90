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
    prompt = new PermissionPrompt(
        surroundings_.name(bundleIdentifier),
        {[this, bundleIdentifier] {
             auto preparation = surroundings_.prepare(bundleIdentifier);
             if (preparation.next != PermissionPrompt::Preparation::Next::Failed) {
                 permission_.agree(bundleIdentifier);
             }
             return preparation;
         },
         [this, bundleIdentifier] {
             permission_.refuse(bundleIdentifier);
             surroundings_.withdraw(bundleIdentifier);
         }});
    prompt->show();
}

} // namespace orvanta
