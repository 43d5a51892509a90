#include "Model/PreferencesMigration.h"

#include "Model/UserDefaults.h"

#include <array>

namespace orvanta::PreferencesMigration {

namespace {

const std::array keys{QStringLiteral("safari"), QStringLiteral("chrome"), QStringLiteral("paused"),
                      QStringLiteral("resetDate"), QStringLiteral("finderIgnoredV1")};

} // namespace

void migrate(UserDefaults& defaults, const QString& from, const QString& to) {
    const auto older = defaults.persistentDomain(from);
    if (!older) {
        return;
    }
    PropertyList newer = defaults.persistentDomain(to).value_or(PropertyList());
    bool changed = false;
    for (const QString& key : keys) {
        changed |= !newer.contains(key) && newer.copyValue(key, *older);
    }
    if (changed) {
        defaults.setPersistentDomain(newer, to);
    }
}

} // namespace orvanta::PreferencesMigration
