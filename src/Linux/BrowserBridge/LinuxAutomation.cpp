#include "Linux/BrowserBridge/LinuxAutomation.h"

#include <utility>

namespace orvanta {

namespace {

using Decision = LinuxAutomationPermission::Decision;

void bringToFront(QWidget& window) {
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.show();
    window.raise();
    window.activateWindow();
}

} // namespace

LinuxAutomation::LinuxAutomation(Surroundings surroundings)
    : surroundings_(std::move(surroundings))
    , bridge_(surroundings_.bridge, surroundings_.transport.now,
              [this](qint64 process) { return mayTell(process); })
    , running_(surroundings_.transport.workspace, surroundings_.transport.workspaceNotifications,
               surroundings_.identity, [this] { return bridge_.browserProcesses(); })
    , transport_(bridge_, surroundings_.transport)
    , permission_(bridge_, {surroundings_.load, surroundings_.store,
                            [this](const QString& identifier) { ask(identifier); },
                            [this](qint64 process) {
                                return running_.bundleIdentifier(process);
                            }})
    , launcher_(
          {surroundings_.entries, surroundings_.transport.mainLoop, surroundings_.display,
           [this](qint64 process, const QString& identifier) { running_.add(process, identifier); },
           [this] {
               showWindow();
           }}) {
    QObject::connect(&permission_, &LinuxAutomationPermission::changed, &bridge_,
                     &BrowserBridge::tellAll);
}

LinuxAutomation::~LinuxAutomation() {
    delete window_;
    for (const auto& [identifier, prompt] : prompts_) {
        delete prompt;
    }
}

void LinuxAutomation::ask(const QString& bundleIdentifier) {
    QPointer<PermissionPrompt>& prompt = prompts_[bundleIdentifier];
    if (prompt) {
        bringToFront(*prompt);
        return;
    }
    const auto isAtWork = [this, bundleIdentifier] {
        return permission_.decision(bundleIdentifier) == Decision::Allowed &&
               permission_.isConnected(bundleIdentifier);
    };
    if (isAtWork()) {
        return;
    }
    const Decision decision = permission_.decision(bundleIdentifier);
    prompt = new PermissionPrompt(surroundings_.name(bundleIdentifier),
                                  {[this, bundleIdentifier] { return agree(bundleIdentifier); },
                                   [this, bundleIdentifier] {
                                       refuse(bundleIdentifier);
                                   }});
    // Meanwhile the browser may connect, or the person refuse in the window.
    QObject::connect(&bridge_, &BrowserBridge::connected, prompt, [shown = prompt.get(), isAtWork] {
        if (isAtWork()) {
            shown->close();
        }
    });
    QObject::connect(&permission_, &LinuxAutomationPermission::changed, prompt,
                     [this, shown = prompt.get(), bundleIdentifier](const QString& changed) {
                         if (changed == bundleIdentifier &&
                             permission_.decision(changed) == Decision::Refused) {
                             shown->close();
                         }
                     });
    if (decision == Decision::Agreed || decision == Decision::Allowed) {
        prompt->conclude();
    }
    prompt->show();
}

bool LinuxAutomation::mayTell(qint64 browserProcess) const {
    const QString identifier = running_.bundleIdentifier(browserProcess);
    return permission_.decision(identifier) == Decision::Allowed && !silenced_.contains(identifier);
}

void LinuxAutomation::setSilenced(std::set<QString> bundleIdentifiers) {
    silenced_ = std::move(bundleIdentifiers);
    bridge_.tellAll();
}

void LinuxAutomation::refuse(const QString& bundleIdentifier) {
    permission_.refuse(bundleIdentifier);
    surroundings_.preparation.withdraw(bundleIdentifier);
}

void LinuxAutomation::showWindow() {
    if (!window_) {
        window_ = new AutomationWindow({[this] { return rows(); },
                                        [this](const QString& identifier) { ask(identifier); },
                                        [this](const QString& identifier) {
                                            refuse(identifier);
                                        }});
        const auto refresh = [shown = window_.get()] {
            shown->refresh();
        };
        QObject::connect(&permission_, &LinuxAutomationPermission::changed, window_, refresh);
        QObject::connect(&bridge_, &BrowserBridge::connected, window_, refresh);
        QObject::connect(&bridge_, &BrowserBridge::disconnected, window_, refresh);
    }
    bringToFront(*window_);
}

std::vector<AutomationWindow::Row> LinuxAutomation::rows() const {
    std::vector<AutomationWindow::Row> rows;
    for (const QString& identifier : surroundings_.browsers()) {
        rows.push_back({identifier, surroundings_.name(identifier),
                        permission_.decision(identifier), missing(identifier)});
    }
    return rows;
}

AutomationWindow::Missing LinuxAutomation::missing(const QString& bundleIdentifier) const {
    if (permission_.isConnected(bundleIdentifier)) {
        return AutomationWindow::Missing::Nothing;
    }
    if (!surroundings_.preparation.hasExtension(bundleIdentifier)) {
        return AutomationWindow::Missing::Extension;
    }
    return running_.instances(bundleIdentifier).empty() ? AutomationWindow::Missing::Start
                                                        : AutomationWindow::Missing::Restart;
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
