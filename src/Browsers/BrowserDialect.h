#pragma once

#include "Platform/AppleEvent.h"

#include <QString>
#include <QVariantMap>

#include <optional>

namespace orvanta {

class Bundles;

/// How a browser is asked for the address of its active tab.
class BrowserDialect {
public:
    /// In the order of detection.
    enum Case { safari, chromium };

    // A case is a dialect.
    constexpr BrowserDialect(Case dialect) // NOLINT(google-explicit-constructor)
        : case_(dialect) {}

    /// The dialect of an application; none when it is not installed, is no browser or speaks none
    /// that is known. What is once found, a dialect or none, is kept for the life of the process.
    /// From any thread.
    static std::optional<BrowserDialect> of(const QString& bundleID, const Bundles& bundles);

    /// Whether an application's information dictionary declares that it opens web pages.
    static bool opensWebPages(const QVariantMap& info);

    /// The dialect that the text of a scripting definition (sdef) declares.
    static std::optional<BrowserDialect> ofSdef(const QString& text);

    /// The property of a window that is its front tab.
    FourCharCode tabProperty() const;
    /// The property of a tab that is its address.
    FourCharCode addressProperty() const;

    friend bool operator==(BrowserDialect, BrowserDialect) = default;

private:
    Case case_;
};

} // namespace orvanta
