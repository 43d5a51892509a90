#pragma once

#include <QString>
#include <QVariantMap>

#include <optional>

namespace orvanta {

/// The extension that tells from within GNOME Shell which window has the focus, as the person has
/// it: a folder of their own, and its name among those that the shell loads at the next login
/// (gjs.guide, "Anatomy of an Extension").
class GnomeExtension {
public:
    struct Places {
        QString packageFolder;    ///< has the extension's forms, each in a folder
        QString extensionsFolder; ///< the person's: ~/.local/share/gnome-shell/extensions
        QString settingsProgram;  ///< gsettings(1)
    };

    explicit GnomeExtension(Places places);

    /// How the shell knows it.
    static QString uuid();

    /// Whether there is a form that this version of the shell, as in "43.9", takes or may take.
    static bool isFor(const QString& shellVersion);

    bool isInstalled() const;

    /// Whether the shell has loaded what is installed now, and not another version of it, by what
    /// the shell says of the extension (`GetExtensionInfo`).
    bool isLoaded(const QVariantMap& information) const;

    /// Puts it there for this version of the shell, and has it enabled. Returns why that failed, in
    /// a person's or the system's words; nothing of it is there then that was not there before.
    std::optional<QString> install(const QString& shellVersion) const;

    /// Replaces one that another version of Orvanta or of the shell left there.
    void renew(const QString& shellVersion) const;

private:
    std::optional<QString> copy(const QString& shellVersion) const;
    std::optional<QString> enable() const;
    /// What gsettings(1) prints; `problem` says why it failed.
    std::optional<QByteArray> settings(const QStringList& arguments, QString& problem) const;
    QString folder() const;

    Places places_;
};

} // namespace orvanta
