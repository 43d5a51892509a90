#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariantMap>

#include <optional>

namespace orvanta {

/// What an application says of itself.
struct Bundle {
    std::optional<QString> bundleIdentifier;
    /// By the keys of an information property list (CFBundleURLTypes and the like); may be empty.
    QVariantMap infoDictionary;
};

/// The applications that are installed. One is named by its location, an absolute path.
class Bundles {
public:
    virtual ~Bundles() = default;
    Bundles(const Bundles&) = delete;
    Bundles& operator=(const Bundles&) = delete;

    virtual std::optional<QString> locationOfApplication(const QString& bundleIdentifier) const = 0;

    /// The application that opens an address when the person does not choose.
    virtual std::optional<QString> applicationToOpen(const QString& address) const = 0;
    /// Every application that can open an address, in the desktop's order.
    virtual QStringList applicationsToOpen(const QString& address) const = 0;

    /// Absent when there is none or it cannot be read.
    virtual std::optional<Bundle> bundle(const QString& location) const = 0;
    /// The content of a file inside a bundle; absent when it is not there or cannot be read.
    virtual std::optional<QByteArray> resource(const QString& location,
                                               const QString& name) const = 0;
    /// As the person reads it in menus.
    virtual QString displayName(const QString& location) const = 0;

protected:
    Bundles() = default;
};

} // namespace orvanta
