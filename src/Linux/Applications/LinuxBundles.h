#pragma once

#include "Linux/Applications/Associations.h"
#include "Linux/Applications/BrowserFamily.h"
#include "Linux/Applications/DesktopEntries.h"
#include "Platform/Bundles.h"

namespace orvanta {

/// The applications that have a desktop entry, whose path is their location. What is asked of an
/// entry beyond its name is read from its file each time. From any thread.
class LinuxBundles final : public Bundles {
public:
    struct Places {
        Associations::Places associations;
        ProgramFolders programs;

        /// By the environment.
        static Places ofThisProcess();
    };

    /// `entries`, of the same applications folders, outlives this.
    LinuxBundles(DesktopEntries& entries, Places places);

    std::optional<QString> locationOfApplication(const QString& bundleIdentifier) const override;
    std::optional<QString> applicationToOpen(const QString& address) const override;
    QStringList applicationsToOpen(const QString& address) const override;
    /// The dictionary has the URL schemes; "public.html" for what opens HTML; and for a browser
    /// that can run our extension the name of a scripting definition.
    std::optional<Bundle> bundle(const QString& location) const override;
    /// The scripting definitions, for every location.
    std::optional<QByteArray> resource(const QString& location, const QString& name) const override;
    QString displayName(const QString& location) const override;

private:
    DesktopEntries& entries_;
    Associations associations_;
    ProgramFolders programs_;
};

} // namespace orvanta
