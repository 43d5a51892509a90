#include "Linux/StatusNotifier/LinuxStatusItem.h"

#include "Linux/StatusNotifier/SystemTray.h"

#include <utility>

namespace orvanta {

namespace {

/// Panels that have both kinds of place open the older one first, and a session's panel may start
/// after us: QSystemTrayIcon is only loaded where nothing better comes.
constexpr MainLoop::Duration patience{2}; // s

} // namespace

LinuxStatusItem::LinuxStatusItem(const QDBusConnection& connection, Handlers handlers,
                                 StatusNotifierItem::Configuration configuration,
                                 MainLoop& mainLoop)
    : handlers_(std::move(handlers))
    , mainLoop_(mainLoop)
    , notifierItem_(connection, handlers_, std::move(configuration)) {
    QObject::connect(&notifierItem_, &StatusNotifierItem::hostChanged, &notifierItem_,
                     [this] { choose(); });
    choose();
}

LinuxStatusItem::~LinuxStatusItem() = default;

bool LinuxStatusItem::isShown() const {
    return embedded_ || notifierItem_.host() == StatusNotifierItem::Host::Present;
}

void LinuxStatusItem::setTitle(const StatusTitle& title) {
    if (std::exchange(title_, title) == title) {
        return;
    }
    notifierItem_.setTitle(title);
    if (embedded_) {
        embedded_->setTitle(title);
    }
}

void LinuxStatusItem::toolTipChanged() {
    notifierItem_.toolTipChanged();
    if (embedded_) {
        embedded_->toolTipChanged();
    }
}

void LinuxStatusItem::choose() {
    switch (notifierItem_.host()) {
    case StatusNotifierItem::Host::Unknown:
        return;
    case StatusNotifierItem::Host::Present:
        embedding_.reset();
        embedded_.reset();
        return;
    case StatusNotifierItem::Host::Absent:
        break;
    }
    if (!trayManager_) {
        trayManager_ = std::make_unique<SystemTrayManager>([this] { choose(); });
    }
    // Once embedded, Qt itself follows the trays.
    if (!embedded_ && !embedding_ && trayManager_->isThere()) {
        embedding_ = mainLoop_.once(patience, [this] { embed(); });
    }
}

void LinuxStatusItem::embed() {
    embedding_.reset();
    if (trayManager_->isThere()) {
        embedded_ = std::make_unique<EmbeddedStatusItem>(handlers_);
        embedded_->setTitle(title_);
        embedded_->toolTipChanged();
    }
}

} // namespace orvanta
