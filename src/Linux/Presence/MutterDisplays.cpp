#include "Linux/Presence/MutterDisplays.h"

#include <utility>

namespace orvanta {

namespace {

QString displayConfig() {
    return QStringLiteral("org.gnome.Mutter.DisplayConfig");
}

QString displayConfigPath() {
    return QStringLiteral("/org/gnome/Mutter/DisplayConfig");
}

} // namespace

MutterDisplays::MutterDisplays(const QDBusConnection& sessionBus, MainLoop& mainLoop)
    : service_(sessionBus, displayConfig(), mainLoop) {
    connect(&service_, &BusService::appeared, this, &MutterDisplays::greet);
    connect(&service_, &BusService::forgotten, this, [this] { setOff(false); });
}

void MutterDisplays::greet() {
    heard_ = false;
    asking_ = false;
    service_.listen(displayConfigPath(), propertiesInterface(), QStringLiteral("PropertiesChanged"),
                    [this](const QDBusMessage& signal) {
                        const auto properties = Properties::ofSignal(signal, displayConfig());
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
    service_.ask(displayConfigPath(), propertiesInterface(), QStringLiteral("GetAll"),
                 {displayConfig()}, [this](const QDBusMessage& answer) {
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
