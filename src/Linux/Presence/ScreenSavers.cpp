#include "Linux/Presence/ScreenSavers.h"

#include <algorithm>
#include <utility>

namespace orvanta {

ScreenSavers::ScreenSavers(const QDBusConnection& sessionBus, MainLoop& mainLoop) {
    for (const char* desktop : {"freedesktop", "gnome", "cinnamon", "mate", "xfce"}) {
        const QString name = QStringLiteral("org.%1.ScreenSaver").arg(QLatin1String(desktop));
        // KDE's and others' stand at the short one, too.
        add(std::make_unique<BusService>(sessionBus, name, mainLoop), name,
            {QStringLiteral("/org/%1/ScreenSaver").arg(QLatin1String(desktop)),
             QStringLiteral("/ScreenSaver")});
    }
    // The above is only there for GNOME once somebody has asked for it; this is the shell itself.
    add(std::make_unique<BusService>(sessionBus, QStringLiteral("org.gnome.Shell.ScreenShield"),
                                     mainLoop),
        QStringLiteral("org.gnome.ScreenSaver"), {QStringLiteral("/org/gnome/ScreenSaver")});
}

void ScreenSavers::add(std::unique_ptr<BusService> service, const QString& interface,
                       std::vector<QString> paths) {
    auto saver = std::make_unique<Saver>();
    saver->service = std::move(service);
    saver->interface = interface;
    saver->paths = std::move(paths);
    Saver* const it = saver.get();
    connect(it->service.get(), &BusService::appeared, this, [this, it] { greet(*it); });
    connect(it->service.get(), &BusService::vanished, this,
            [it] { it->vanishedActive |= it->active; });
    connect(it->service.get(), &BusService::forgotten, this, [this, it] { setActive(*it, false); });
    savers_.push_back(std::move(saver));
}

void ScreenSavers::start() {
    for (const auto& saver : savers_) {
        saver->service->start();
    }
}

bool ScreenSavers::isActive() const {
    return std::ranges::any_of(savers_, [](const auto& saver) { return saver->active; });
}

bool ScreenSavers::dropVanished() {
    bool any = false;
    for (const auto& saver : savers_) {
        if (saver->vanishedActive && !saver->service->isPresent()) {
            any = true;
            saver->vanishedActive = false;
            setActive(*saver, false);
        }
    }
    return any;
}

void ScreenSavers::greet(Saver& saver) {
    saver.heard = false;
    saver.service->listen(QString(), saver.interface, QStringLiteral("ActiveChanged"),
                          [this, &saver](const QDBusMessage& signal) {
                              if (const auto active = argument<bool>(signal, 0)) {
                                  saver.heard = true;
                                  setActive(saver, *active);
                              }
                          });
    ask(saver, 0);
}

void ScreenSavers::ask(Saver& saver, size_t path) {
    saver.service->ask(saver.paths[path], saver.interface, QStringLiteral("GetActive"), {},
                       [this, &saver, path](const QDBusMessage& answer) {
                           if (const auto active = argument<bool>(answer, 0)) {
                               setActive(saver, *active);
                           } else if (path + 1 < saver.paths.size()) {
                               ask(saver, path + 1);
                           } else if (!saver.heard) {
                               // What its predecessor said holds no longer.
                               setActive(saver, false);
                           }
                       });
}

void ScreenSavers::setActive(Saver& saver, bool active) {
    if (saver.service->isPresent()) {
        saver.vanishedActive = false;
    }
    if (saver.active != active) {
        saver.active = active;
        Q_EMIT changed();
    }
}

} // namespace orvanta
