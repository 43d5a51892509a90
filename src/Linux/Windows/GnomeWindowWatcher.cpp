#include "Linux/Windows/GnomeWindowWatcher.h"

#include <QDBusVariant>

#include <utility>

namespace orvanta {

namespace {

const auto shell = QStringLiteral("org.gnome.Shell");
const auto shellPath = QStringLiteral("/org/gnome/Shell");
const auto extensionInterface = QStringLiteral("com.brindlework.orvanta.Shell");
const auto extensionPath = QStringLiteral("/com/brindlework/orvanta/Shell");

// Of an extension, as GetExtensionInfo tells it (gnome-shell's "extensionUtils.js").
constexpr double enabled = 1;
constexpr double loadingFailed = 3;
constexpr double outOfDate = 4;

} // namespace

GnomeWindowWatcher::GnomeWindowWatcher(const QDBusConnection& sessionBus, MainLoop& mainLoop,
                                       GnomeExtension extension)
    : WindowWatcher(sessionBus.isConnected() ? State::Waiting : State::Unsupported)
    , service_(sessionBus, shell, mainLoop)
    , extension_(std::move(extension)) {
    connect(&service_, &BusService::appeared, this, &GnomeWindowWatcher::greet);
    connect(&service_, &BusService::vanished, this, &GnomeWindowWatcher::leave);
    service_.start();
}

std::optional<QString> GnomeWindowWatcher::allow() {
    if (state() != State::NeedsPermission) {
        return std::nullopt;
    }
    if (auto problem = extension_.install(shellVersion_)) {
        return problem;
    }
    askExtension();
    return std::nullopt;
}

void GnomeWindowWatcher::greet() {
    service_.listen(extensionPath, extensionInterface, QStringLiteral("FocusChanged"),
                    [this](const QDBusMessage& focus) { note(focus); });
    // The shell also takes it away for a moment when another extension goes.
    service_.listen(extensionPath, extensionInterface, QStringLiteral("Ended"),
                    [this](const QDBusMessage& /*signal*/) { ask(); });
    service_.ask(shellPath, propertiesInterface(), QStringLiteral("Get"),
                 {shell, QStringLiteral("ShellVersion")}, [this](const QDBusMessage& answer) {
                     if (const auto version = argument<QDBusVariant>(answer, 0)) {
                         shellVersion_ = version->variant().toString();
                         extension_.renew(shellVersion_);
                     }
                     ask();
                 });
}

void GnomeWindowWatcher::ask() {
    service_.ask(extensionPath, extensionInterface, QStringLiteral("GetFocus"), {},
                 [this](const QDBusMessage& answer) {
                     if (!note(answer)) {
                         setActiveWindow(std::nullopt);
                         setState(State::Waiting);
                         askExtension();
                     }
                 });
}

bool GnomeWindowWatcher::note(const QDBusMessage& focus) {
    const auto number = argument<qulonglong>(focus, 0);
    const auto application = argument<QString>(focus, 1);
    const auto wmClass = argument<QString>(focus, 2);
    const auto process = argument<int>(focus, 3);
    if (!number || !application || !wmClass || !process) {
        return false;
    }
    std::optional<Window> window;
    if (*number != 0) {
        window.emplace();
        window->id = *number;
        window->wmClass = *wmClass;
        window->desktopFile = *application;
        if (*process > 0) {
            window->processIdentifier = *process;
        }
    }
    setState(State::Watching);
    setActiveWindow(std::move(window));
    return true;
}

/// Why nothing is told.
void GnomeWindowWatcher::askExtension() {
    service_.ask(shellPath, QStringLiteral("org.gnome.Shell.Extensions"),
                 QStringLiteral("GetExtensionInfo"), {GnomeExtension::uuid()},
                 [this](const QDBusMessage& answer) {
                     if (state() != State::Watching) { // It may have begun to tell meanwhile.
                         setState(reason(answer));
                     }
                 });
}

WindowWatching GnomeWindowWatcher::reason(const QDBusMessage& information) const {
    if (information.type() != QDBusMessage::ReplyMessage || !GnomeExtension::isFor(shellVersion_)) {
        return State::Unsupported;
    }
    const auto told = Properties::ofReply(information);
    const auto state = told.value<double>("state");
    if (!state) { // The shell does not know it: it looks for them at the login.
        return extension_.isInstalled() ? State::NeedsLogin : State::NeedsPermission;
    }
    if (*state != enabled && *state != outOfDate && *state != loadingFailed) {
        return State::NeedsPermission;
    }
    // It may have been replaced since the shell loaded it, or passed it over.
    return extension_.isLoaded(told.values) ? State::Incompatible : State::NeedsLogin;
}

void GnomeWindowWatcher::leave() {
    setActiveWindow(std::nullopt);
    setState(state() == State::Watching ? State::Ended : State::Waiting);
}

} // namespace orvanta
