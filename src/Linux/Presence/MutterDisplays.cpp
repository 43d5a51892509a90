#include "Linux/Presence/MutterDisplays.h"

#include <utility>

namespace orvanta {

namespace {

QString name() {
    return QStringLiteral("org.gnome.Mutter.DisplayConfig");
}

QString path() {
    return QStringLiteral("/org/gnome/Mutter/DisplayConfig");
}

} // namespace

MutterDisplays::MutterDisplays(const QDBusConnection& sessionBus, MainLoop& mainLoop)
    : service_(sessionBus, name(), mainLoop) {
    connect(&service_, &BusService::appeared, this, &MutterDisplays::greet);
    connect(&service_, &BusService::forgotten, this, [this] { setOff(false); });
}

void MutterDisplays::greet() {
    heard_ = false;
    asking_ = false;
    service_.listen(path(), propertiesInterface(), QStringLiteral("PropertiesChanged"),
                    [this](const QDBusMessage& signal) {
                        const auto properties = Properties::ofSignal(signal, name());
                        note(properties);
                        if (properties.someUntold) {
                            ask();
                        }
                    });
    ask();
}

void MutterDisplays::ask() {
    if (std::exchange(asking_, true)) {
        return;
    }
    service_.ask(path(), propertiesInterface(), QStringLiteral("GetAll"), {name()},
                 [this](const QDBusMessage& answer) {
                     asking_ = false;
                     note(Properties::ofReply(answer));
                     if (!heard_) {
                         setOff(false); // What its predecessor said holds no longer.
                     }
                 });
}

void MutterDisplays::note(const Properties& properties) {
    if (const auto mode = properties.value<int>("PowerSaveMode")) {
        heard_ = true;
        setOff(*mode > 0);
    }
}

void MutterDisplays::setOff(bool off) {
    if (off_ != off) {
        off_ = off;
        Q_EMIT changed();
    }
}

} // namespace orvanta
