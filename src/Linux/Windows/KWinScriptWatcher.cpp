#include "Linux/Windows/KWinScriptWatcher.h"

#include "Platform/PrivateFolder.h"

#include <QDBusVirtualObject>
#include <QHash>
#include <QSaveFile>

#include <functional>
#include <utility>

namespace orvanta {

namespace {

const auto scripting = QStringLiteral("/Scripting");
const auto scriptingInterface = QStringLiteral("org.kde.kwin.Scripting");
// KWin knows a script by it. One that a killed process left is replaced.
const auto scriptName = QStringLiteral("com.brindlework.orvanta");

const auto earPath = QStringLiteral("/com/brindlework/orvanta/Windows");
const auto earInterface = QStringLiteral("com.brindlework.orvanta.Windows");

// Plasma 6 speaks of windows where Plasma 5 spoke of clients. All as text: of what type a number
// comes is for KWin to choose.
constexpr const char* script = R"js(
function tell(window) {
    const words = window ? [window.internalId, window.resourceClass, window.resourceName,
                            window.desktopFileName, window.pid] : ["", "", "", "", ""];
    callDBus("%1", "%2", "%3", "Activated", ...words.map(String));
}
const isOlder = workspace.clientActivated !== undefined;
(isOlder ? workspace.clientActivated : workspace.windowActivated).connect(tell);
tell(isOlder ? workspace.activeClient : workspace.activeWindow);
)js";

/// An object on the bus that hands on all that is said to it.
class Ear final : public QDBusVirtualObject {
public:
    explicit Ear(std::function<void(const QDBusMessage&)> hear)
        : hear_(std::move(hear)) {}

    QString introspect(const QString& /*path*/) const override {
        return QStringLiteral("<interface name=\"") + earInterface +
               QStringLiteral("\"><method name=\"Activated\"/></interface>");
    }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        if (message.interface() != earInterface || message.member() != QLatin1String("Activated")) {
            return false;
        }
        hear_(message);
        if (message.isReplyRequired()) {
            connection.send(message.createReply());
        }
        return true;
    }

private:
    std::function<void(const QDBusMessage&)> hear_;
};

} // namespace

KWinScriptWatcher::KWinScriptWatcher(QDBusConnection sessionBus, MainLoop& mainLoop, QString folder)
    : WindowWatcher(sessionBus.isConnected() && !folder.isEmpty() ? State::Waiting
                                                                  : State::Unsupported)
    , bus_(std::move(sessionBus))
    , folder_(std::move(folder))
    , ear_(std::make_unique<Ear>([this](const QDBusMessage& call) { hear(call); }))
    , service_(bus_, QStringLiteral("org.kde.KWin"), mainLoop) {
    if (state() == State::Unsupported) {
        return;
    }
    bus_.registerVirtualObject(earPath, ear_.get());
    connect(&service_, &BusService::appeared, this, &KWinScriptWatcher::load);
    connect(&service_, &BusService::vanished, this, &KWinScriptWatcher::leave);
    service_.start();
}

KWinScriptWatcher::~KWinScriptWatcher() {
    bus_.unregisterObject(earPath);
    if (service_.isPresent()) {
        service_.tell(scripting, scriptingInterface, QStringLiteral("unloadScript"), {scriptName});
    }
    QFile::remove(file());
}

void KWinScriptWatcher::load() {
    if (!write()) {
        setState(State::Unsupported);
        return;
    }
    const auto failed = [this] {
        setState(State::Unsupported);
    };
    service_.ask(scripting, scriptingInterface, QStringLiteral("unloadScript"), {scriptName},
                 [this, failed](const QDBusMessage& /*whether there was one*/) {
                     service_.ask(scripting, scriptingInterface, QStringLiteral("loadScript"),
                                  {file(), scriptName}, [this, failed](const QDBusMessage& number) {
                                      if (argument<int>(number, 0).value_or(-1) < 0) {
                                          failed();
                                          return;
                                      }
                                      service_.ask(
                                          scripting, scriptingInterface, QStringLiteral("start"),
                                          {}, [failed](const QDBusMessage& answer) {
                                              if (answer.type() == QDBusMessage::ErrorMessage) {
                                                  failed();
                                              }
                                          });
                                  });
                 });
}

bool KWinScriptWatcher::write() const {
    if (folder_.isEmpty() || !makePrivateFolder(folder_)) {
        return false;
    }
    QSaveFile saved(file());
    const QByteArray text =
        QString::fromLatin1(script).arg(bus_.baseService(), earPath, earInterface).toUtf8();
    return saved.open(QIODevice::WriteOnly) && saved.write(text) == text.size() && saved.commit();
}

QString KWinScriptWatcher::file() const {
    return folder_ + QStringLiteral("/windows.js");
}

void KWinScriptWatcher::hear(const QDBusMessage& call) {
    const auto word = [&call](int index) {
        return argument<QString>(call, index);
    };
    const auto id = word(0);
    const auto wmClass = word(1);
    const auto wmInstance = word(2);
    const auto desktopFile = word(3);
    const auto process = word(4);
    if (!service_.isOwner(call.service()) || !id || !wmClass || !wmInstance || !desktopFile ||
        !process) {
        return;
    }
    std::optional<Window> window;
    if (!id->isEmpty()) {
        window.emplace();
        window->id = qHash(*id);
        window->wmClass = *wmClass;
        window->wmInstance = *wmInstance;
        window->desktopFile = *desktopFile;
        if (const qint64 number = process->toLongLong(); number > 0) {
            window->processIdentifier = number;
        }
    }
    setState(State::Watching);
    setActiveWindow(std::move(window));
}

void KWinScriptWatcher::leave() {
    setActiveWindow(std::nullopt);
    setState(state() == State::Watching ? State::Ended : State::Waiting);
}

} // namespace orvanta
