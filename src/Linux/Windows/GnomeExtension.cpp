#include "Linux/Windows/GnomeExtension.h"

#include "Linux/Files/PlainFile.h"

#include <QDir>
#include <QFile>
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

/// The folder of the form that this version of the shell takes; empty when there is none.
QString formFor(const QString& shellVersion) {
    constexpr int oldest = 42;
    constexpr int firstOfModules = 45;
    constexpr int newest = 51;
    const int version = shellVersion.section(u'.', 0, 0).toInt();
    if (version < oldest || version > newest) {
        return {};
    }
    return version < firstOfModules ? QStringLiteral("42") : QStringLiteral("45");
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
    for (const QString& name : fileNames()) {
        const QString source = places_.packageFolder + u'/' + formFor(shellVersion) + u'/' + name;
        const auto content = contentOf(source);
        if (!content) {
            return QStringLiteral("%1: %2").arg(source, qt_error_string());
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
