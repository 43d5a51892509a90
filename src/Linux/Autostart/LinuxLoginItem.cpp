#include "Linux/Autostart/LinuxLoginItem.h"

#include "Linux/Applications/ExecLine.h"
#include "Linux/Applications/KeyFile.h"
#include "Linux/Files/PlainFile.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace orvanta {

namespace {

constexpr const char* group = G_KEY_FILE_DESKTOP_GROUP;
/// Orvanta's own mark on an entry that hides the one for everybody.
constexpr const char* unregisteredKey = "X-Orvanta-Unregistered";

const auto fileBelow = QStringLiteral("/autostart/com.brindlework.orvanta.desktop");

struct Settings {
    QLatin1StringView desktop;
    QLatin1StringView command;
};

/// Where desktops keep what is started at login; of several the first that is installed.
constexpr Settings settings[] = {
    {QLatin1StringView("GNOME"), QLatin1StringView("gnome-session-properties")},
    {QLatin1StringView("GNOME"), QLatin1StringView("gnome-tweaks")},
    {QLatin1StringView("KDE"), QLatin1StringView("systemsettings kcm_autostart")},
    {QLatin1StringView("XFCE"), QLatin1StringView("xfce4-session-settings")},
    {QLatin1StringView("LXQt"), QLatin1StringView("lxqt-config-session")},
    {QLatin1StringView("MATE"), QLatin1StringView("mate-session-properties")},
    {QLatin1StringView("X-Cinnamon"), QLatin1StringView("cinnamon-settings startup")},
};

bool isFalse(const KeyFile& entry, const char* key) {
    const Characters value = entry.text(group, key);
    const QByteArrayView text(value.get());
    return text == "false" || text == "0";
}

/// The line that keeps the entry from being started on these desktops; empty when none does.
QString disablingLine(const KeyFile& entry, const QStringList& desktops) {
    if (entry.isSet(group, G_KEY_FILE_DESKTOP_KEY_HIDDEN)) {
        return QStringLiteral("Hidden");
    }
    for (const char* key : {"X-GNOME-Autostart-enabled", "X-MATE-Autostart-enabled"}) {
        if (isFalse(entry, key)) {
            return QString::fromLatin1(key);
        }
    }
    const QStringList only = entry.list(group, G_KEY_FILE_DESKTOP_KEY_ONLY_SHOW_IN);
    const QStringList notIn = entry.list(group, G_KEY_FILE_DESKTOP_KEY_NOT_SHOW_IN);
    // The first name of the desktop that one of them has decides.
    for (const QString& desktop : desktops) {
        if (only.contains(desktop)) {
            return {};
        }
        if (notIn.contains(desktop)) {
            return QStringLiteral("NotShowIn");
        }
    }
    return only.isEmpty() ? QString() : QStringLiteral("OnlyShowIn");
}

bool isProgram(const QString& name) {
    return !name.isEmpty() && !QStandardPaths::findExecutable(name).isEmpty();
}

bool startsSomething(const KeyFile& entry) {
    const Characters exec = entry.text(group, G_KEY_FILE_DESKTOP_KEY_EXEC);
    const Characters tryExec = entry.text(group, G_KEY_FILE_DESKTOP_KEY_TRY_EXEC);
    return isProgram(execWords(QString::fromUtf8(exec.get()), {}).value(0)) &&
           (!tryExec || isProgram(QString::fromUtf8(tryExec.get())));
}

QByteArray newEntry(const QString& executable) {
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Orvanta\n"
                          "Comment=Mede para onde vai a sua atenção\n"
                          "Exec=%1\n"
                          "TryExec=%2\n"
                          "Icon=com.brindlework.orvanta\n"
                          "Terminal=false\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(execWord(executable), keyFileValue(executable))
        .toUtf8();
}

QByteArray hidingEntry() {
    return QByteArray("[Desktop Entry]\n"
                      "Type=Application\n"
                      "Name=Orvanta\n"
                      "Hidden=true\n") +
           unregisteredKey + "=true\n";
}

std::optional<QString> reasonOf(const std::optional<FileProblem>& problem) {
    return problem ? std::optional(problem->path + QStringLiteral(": ") + problem->reason)
                   : std::nullopt;
}

} // namespace

/// The entry that counts.
struct LinuxLoginItem::Found {
    Status status = Status::notRegistered;
    QString path;
    QString disablingLine;
};

LinuxLoginItem::Places LinuxLoginItem::Places::ofThisProcess() {
    QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    const QString home = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    folders.removeAll(home);
    return {home, folders, QCoreApplication::applicationFilePath(),
            qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':', Qt::SkipEmptyParts)};
}

LinuxLoginItem::LinuxLoginItem(Places places)
    : places_(std::move(places)) {}

LinuxLoginItem::~LinuxLoginItem() {
    delete message_;
}

QString LinuxLoginItem::ownPath() const {
    return places_.configHome + fileBelow;
}

LinuxLoginItem::Found LinuxLoginItem::find() const {
    if (!QFileInfo(places_.executable).isExecutable()) {
        return {Status::notFound, places_.executable, {}};
    }
    for (const QString& folder : QStringList(places_.configHome) + places_.configDirs) {
        const QString path = folder + fileBelow;
        if (!QFileInfo::exists(path)) {
            continue;
        }
        const auto entry = KeyFile::read(QFile::encodeName(path));
        if (!entry) {
            return {Status::notRegistered, path, {}}; // Nobody starts it, nor the ones after it.
        }
        const QString line = disablingLine(*entry, places_.desktops);
        if (!line.isEmpty()) {
            return {entry->isSet(group, unregisteredKey) ? Status::notRegistered
                                                         : Status::requiresApproval,
                    path, line};
        }
        return {startsSomething(*entry) ? Status::enabled : Status::notRegistered, path, {}};
    }
    return {Status::notRegistered, ownPath(), {}};
}

LoginItem::Status LinuxLoginItem::status() const {
    return find().status;
}

std::optional<QString> LinuxLoginItem::registerItem() {
    problem_.reset();
    switch (status()) {
    case Status::enabled:
    case Status::requiresApproval:
        break;
    case Status::notFound:
        problem_ = places_.executable + QStringLiteral(": ") + qt_error_string(ENOENT);
        break;
    case Status::notRegistered:
        problem_ = reasonOf(replaceFile(ownPath(), newEntry(places_.executable)));
        break;
    }
    return problem_;
}

std::optional<QString> LinuxLoginItem::unregisterItem() {
    problem_.reset();
    const bool isThereForEverybody =
        std::ranges::any_of(places_.configDirs, [](const QString& folder) {
            return QFileInfo::exists(folder + fileBelow);
        });
    return reasonOf(isThereForEverybody ? replaceFile(ownPath(), hidingEntry())
                                        : removePlainFile(ownPath()));
}

void LinuxLoginItem::openSystemSettingsLoginItems() {
    for (const QString& desktop : std::as_const(places_.desktops)) {
        for (const auto& [name, command] : settings) {
            QStringList words = QString(command).split(u' ');
            const QString program = QStandardPaths::findExecutable(words.takeFirst());
            if (desktop == name && !program.isEmpty() && QProcess::startDetached(program, words)) {
                return;
            }
        }
    }
    explain();
}

void LinuxLoginItem::explain() {
    const Found found = find();
    QString text;
    QString detail;
    switch (found.status) {
    case Status::enabled:
        text = QStringLiteral("O orvanta é aberto quando você entra.");
        detail =
            QStringLiteral("Para que deixe de ser, desative “Iniciar ao entrar” nos ajustes do "
                           "orvanta. Quem o abre é este arquivo:\n%1")
                .arg(found.path);
        break;
    case Status::requiresApproval:
        text = QStringLiteral("O orvanta está desativado entre os programas abertos quando você "
                              "entra.");
        detail = QStringLiteral("Para ativá-lo, apague a linha que começa com “%1” deste "
                                "arquivo:\n%2")
                     .arg(found.disablingLine, found.path);
        break;
    case Status::notRegistered:
        text = QStringLiteral("O orvanta não é aberto quando você entra.");
        detail = problem_ ? QStringLiteral("Não foi possível gravar o arquivo que o abre:\n%1\n\n"
                                           "Corrija isso e tente de novo.")
                                .arg(*problem_)
                          : QStringLiteral("Ative “Iniciar ao entrar” no orvanta. Isso grava "
                                           "este arquivo:\n%1")
                                .arg(ownPath());
        break;
    case Status::notFound:
        text = QStringLiteral("O programa do orvanta não foi encontrado.");
        detail = QStringLiteral("Instale-o de novo. Ele estava em:\n%1").arg(found.path);
        break;
    }
    if (!message_) {
        message_ = new QMessageBox(QMessageBox::Information, QStringLiteral("orvanta"), QString());
        message_->setAttribute(Qt::WA_DeleteOnClose);
        message_->setTextFormat(Qt::PlainText);
        message_->setTextInteractionFlags(Qt::TextSelectableByMouse);
        message_->setModal(false);
    }
    message_->setText(text);
    message_->setInformativeText(detail);
    message_->show();
    message_->raise();
    message_->activateWindow();
}

} // namespace orvanta
