#include "Linux/Windows/GnomeExtension.h"

#include "Linux/Files/PlainFile.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QStringList>

#include <glib.h>

#include <array>
#include <utility>

namespace orvanta {

namespace {

constexpr int settingsWithin = 5000; // ms

const auto schema = QStringLiteral("org.gnome.shell");
const auto enabledKey = QStringLiteral("enabled-extensions");
const auto disabledKey = QStringLiteral("disabled-extensions");

/// The shell passes over a folder without the latter, so that comes last.
const std::array<QString, 2>& fileNames() {
    static const std::array all{QStringLiteral("extension.js"), QStringLiteral("metadata.json")};
    return all;
}

/// The one by which an extension is for a version of the shell, from GNOME 40 on.
QString majorOf(const QString& shellVersion) {
    return shellVersion.section(u'.', 0, 0);
}

/// The folder of the form that this version of the shell takes; empty when there is none. A version
/// newer than any that was seen is given the newest form: whether that works, it will tell.
QString formFor(const QString& shellVersion) {
    constexpr int oldest = 42;
    constexpr int firstOfModules = 45;
    const int version = majorOf(shellVersion).toInt();
    if (version < oldest) {
        return {};
    }
    return version < firstOfModules ? QStringLiteral("42") : QStringLiteral("45");
}

// In the metadata, which the shell gives back for the one it has loaded.
const auto digestKey = QStringLiteral("digest");

QString digestOf(const QByteArray& script) {
    return QString::fromLatin1(
        QCryptographicHash::hash(script, QCryptographicHash::Sha256).toHex());
}

/// As they are installed: for this version of the shell, which takes no other, and with the digest
/// of the script beside them.
QByteArray stamped(const QByteArray& metadata, const QString& shellVersion,
                   const QByteArray& script) {
    QJsonObject object = QJsonDocument::fromJson(metadata).object();
    object[QStringLiteral("shell-version")] = QJsonArray{majorOf(shellVersion)};
    object[digestKey] = digestOf(script);
    return QJsonDocument(object).toJson();
}

std::optional<QByteArray> contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? std::optional(file.readAll()) : std::nullopt;
}

/// A list of strings in GVariant's text format; absent when it is something else.
std::optional<QStringList> listOf(const QByteArray& text) {
    GVariant* const value =
        g_variant_parse(G_VARIANT_TYPE_STRING_ARRAY, text.constData(), nullptr, nullptr, nullptr);
    if (value == nullptr) {
        return std::nullopt;
    }
    QStringList list;
    GVariantIter each;
    g_variant_iter_init(&each, value);
    const char* item = nullptr;
    while (g_variant_iter_next(&each, "&s", &item) != FALSE) {
        list.append(QString::fromUtf8(item));
    }
    g_variant_unref(value);
    return list;
}

QString textOf(const QStringList& list) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_STRING_ARRAY);
    for (const QString& item : list) {
        g_variant_builder_add(&builder, "s", item.toUtf8().constData());
    }
    GVariant* const value = g_variant_ref_sink(g_variant_builder_end(&builder));
    gchar* const text = g_variant_print(value, TRUE);
    QString result = QString::fromUtf8(text);
    g_free(text);
    g_variant_unref(value);
    return result;
}

} // namespace

GnomeExtension::GnomeExtension(Places places)
    : places_(std::move(places)) {}

QString GnomeExtension::uuid() {
    return QStringLiteral("orvanta@brindlework.com");
}

bool GnomeExtension::isFor(const QString& shellVersion) {
    return !formFor(shellVersion).isEmpty();
}

QString GnomeExtension::folder() const {
    return places_.extensionsFolder + u'/' + uuid();
}

bool GnomeExtension::isLoaded(const QVariantMap& information) const {
    const auto script = contentOf(folder() + u'/' + fileNames().front());
    return script && information.value(digestKey).toString() == digestOf(*script);
}

bool GnomeExtension::isInstalled() const {
    return QFile::exists(folder() + u'/' + fileNames().back());
}

std::optional<QString> GnomeExtension::install(const QString& shellVersion) const {
    const bool wasInstalled = isInstalled();
    auto problem = copy(shellVersion);
    if (!problem) {
        problem = enable();
    }
    if (problem && !wasInstalled) {
        for (const QString& name : fileNames()) {
            removePlainFile(folder() + u'/' + name);
        }
        QDir().rmdir(folder());
    }
    return problem;
}

void GnomeExtension::renew(const QString& shellVersion) const {
    if (isInstalled() && isFor(shellVersion)) {
        copy(shellVersion);
    }
}

std::optional<QString> GnomeExtension::copy(const QString& shellVersion) const {
    QByteArray script;
    for (const QString& name : fileNames()) {
        const QString source = places_.packageFolder + u'/' + formFor(shellVersion) + u'/' + name;
        auto content = contentOf(source);
        if (!content) {
            return QStringLiteral("%1: %2").arg(source, qt_error_string());
        }
        if (name == fileNames().back()) {
            content = stamped(*content, shellVersion, script);
        } else {
            script = *content;
        }
        const QString target = folder() + u'/' + name;
        if (contentOf(target) == content) {
            continue;
        }
        if (const auto problem = replaceFile(target, *content)) {
            return problem->path + QStringLiteral(": ") + problem->reason;
        }
    }
    return std::nullopt;
}

std::optional<QString> GnomeExtension::enable() const {
    QString problem;
    const auto areOff = settings(
        {QStringLiteral("get"), schema, QStringLiteral("disable-user-extensions")}, problem);
    if (!areOff) {
        return problem;
    }
    if (areOff->trimmed() == "true") {
        return QStringLiteral("As extensões estão desativadas no GNOME. Ative-as no aplicativo "
                              "Extensões e tente de novo.");
    }
    for (const auto& [key, isWanted] :
         {std::pair(disabledKey, false), std::pair(enabledKey, true)}) {
        const auto text = settings({QStringLiteral("get"), schema, key}, problem);
        if (!text) {
            return problem;
        }
        auto list = listOf(*text);
        if (!list) {
            return schema + u' ' + key + QStringLiteral(": ") + QString::fromUtf8(*text);
        }
        if (list->contains(uuid()) == isWanted) {
            continue;
        }
        if (isWanted) {
            list->append(uuid());
        } else {
            list->removeAll(uuid());
        }
        if (!settings({QStringLiteral("set"), schema, key, textOf(*list)}, problem)) {
            return problem;
        }
    }
    return std::nullopt;
}

std::optional<QByteArray> GnomeExtension::settings(const QStringList& arguments,
                                                   QString& problem) const {
    QProcess process;
    process.start(places_.settingsProgram, arguments, QIODevice::ReadOnly);
    if (process.waitForFinished(settingsWithin) && process.exitStatus() == QProcess::NormalExit &&
        process.exitCode() == 0) {
        return process.readAllStandardOutput();
    }
    const QString said = QString::fromUtf8(process.readAllStandardError()).trimmed();
    problem = places_.settingsProgram + QStringLiteral(": ") +
              (said.isEmpty() ? process.errorString() : said);
    return std::nullopt;
}

} // namespace orvanta
