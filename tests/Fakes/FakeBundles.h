#pragma once

#include "Platform/Bundles.h"

#include <map>

namespace orvanta {

/// Applications that a test installs.
class FakeBundles final : public Bundles {
public:
    struct Application {
        Bundle bundle;
        QString name;
        std::map<QString, QByteArray> resources;
    };
    std::map<QString, Application> applications; ///< by location
    QStringList webHandlers;
    std::optional<QString> defaultHandler;
    mutable int resourcesRead = 0;

    /// Installs a browser, found by what follows the last slash of its location.
    void install(const QString& location, const QString& name, const QByteArray& sdef) {
        const QVariantMap types{
            {QStringLiteral("CFBundleURLSchemes"),
             QStringList{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("file")}}};
        const QVariantMap info{
            {QStringLiteral("CFBundleURLTypes"), QVariantList{types}},
            {QStringLiteral("OSAScriptingDefinition"), QStringLiteral("a.sdef")}};
        applications[location] = {
            {location.section(u'/', -1), info}, name, {{QStringLiteral("a.sdef"), sdef}}};
        webHandlers.append(location);
    }

    std::optional<QString> locationOfApplication(const QString& bundleIdentifier) const override {
        for (const auto& [location, application] : applications) {
            if (application.bundle.bundleIdentifier == bundleIdentifier) {
                return location;
            }
        }
        return std::nullopt;
    }
    std::optional<QString> applicationToOpen(const QString& address) const override {
        return address == QStringLiteral("https:") ? defaultHandler : std::nullopt;
    }
    QStringList applicationsToOpen(const QString& address) const override {
        return address == QStringLiteral("https:") ? webHandlers : QStringList();
    }
    std::optional<Bundle> bundle(const QString& location) const override {
        const auto found = applications.find(location);
        return found == applications.end() ? std::nullopt : std::optional(found->second.bundle);
    }
    std::optional<QByteArray> resource(const QString& location,
                                       const QString& name) const override {
        ++resourcesRead;
        const auto& resources = applications.at(location).resources;
        const auto found = resources.find(name);
        return found == resources.end() ? std::nullopt : std::optional(found->second);
    }
    QString displayName(const QString& location) const override {
        return applications.at(location).name;
    }
};

} // namespace orvanta
