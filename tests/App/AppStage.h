#pragma once

#include "App/AppDelegate.h"
#include "Fakes/FakeDesktop.h"
#include "Fakes/QtPrinters.h"
#include "Model/Sqlite.h"
#include "Views/GridButton.h"
#include "Views/PanelRoot.h"
#include "Views/WidgetReading.h"

#include <QMainWindow>
#include <QMessageBox>
#include <QTemporaryDir>

namespace orvanta {

/// The whole application on a desktop in the hand.
class AppStage {
public:
    QTemporaryDir folder;
    FakeDesktop desktop;
    QStringList alerts;
    int terminations = 0;
    std::unique_ptr<AppDelegate> delegate;

    UserDefaults defaults() const {
        return {folder.path(), QStringLiteral("com.brindlework.orvanta")};
    }
    bool launch() {
        delegate = std::make_unique<AppDelegate>(AppDelegate::Surroundings{
            .desktop = desktop,
            .configurationFolder = folder.path(),
            .dataFolder = folder.path(),
            .calendar = Calendar(QTimeZone("America/Sao_Paulo")),
            .alert = [this](const QString& message,
                            const QString& detail) { alerts += message + u'|' + detail; },
            .terminate =
                [this] {
                    ++terminations;
                }});
        const bool launched = delegate->applicationDidFinishLaunching();
        desktop.loop.advance(0);
        return launched;
    }
    void end() {
        delegate->applicationWillTerminate();
        delegate.reset();
        settle();
    }
    /// A browser that can be asked for its sites.
    void install(const QString& id, const QString& name) {
        desktop.installed.install(
            QStringLiteral("/apps/") + id, name,
            R"(<property code="acTa"/><property code="URL "/><property code="cTab"/>)"
            R"(<property code="pURL"/>)");
    }
    static AppleEvent showing(const QString& address) {
        AppleEvent reply;
        reply.parameters.emplace(AppleEvent::directObject, EventDescriptor::text(address));
        return reply;
    }
    void post(Notification notification) {
        desktop.workspaceCenter.post(notification);
        desktop.distributedCenter.post(notification);
    }
    /// Nothing, if the identifier is empty.
    void toFront(const QString& id, const QString& name = {}) {
        desktop.workspace.front = RunningApplication{id, name, {}, {}};
        if (id.isEmpty()) {
            desktop.workspace.front.reset();
        }
        post(Notification::DidActivateApplication);
    }
    void tellOfWindows(WindowWatching watching) {
        desktop.watching = watching;
        Q_EMIT desktop.windowWatchingChanged();
    }
    static Popover* popover() { return firstShown<Popover>(); }
    static QMainWindow* settings() { return firstShown<QMainWindow>(); }
    StatusMenuItem entry(std::size_t index) const {
        return desktop.item->handlers.menu().at(index);
    }
};

} // namespace orvanta
