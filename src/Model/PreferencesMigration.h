#pragma once

#include <QString>

namespace orvanta {

class UserDefaults;

namespace PreferencesMigration {

/// Copies what an older installation left under `from` into the domain `to`, where that has no
/// value of its own yet. The older domain is only read, so doing it again changes nothing.
void migrate(UserDefaults& defaults, const QString& from, const QString& to);

} // namespace PreferencesMigration

} // namespace orvanta
