#pragma once

#include <QString>

#include <vector>

namespace orvanta {

class Bundles;

/// A browser that is installed and whose sites can be identified.
struct Browser {
    QString id; ///< bundle identifier
    QString name;
    bool isDefault = false; ///< whether the system opens addresses in it

    /// The default first, then by name. Asks the desktop anew each time.
    static std::vector<Browser> installed(const Bundles& bundles);

    friend bool operator==(const Browser&, const Browser&) = default;
};

} // namespace orvanta
