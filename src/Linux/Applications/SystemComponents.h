#pragma once

#include <QString>

namespace orvanta {

/// Whether a bundle identifier names a part of a Linux desktop itself, which nobody works in: a
/// panel, shell, desktop background, lock screen, greeter, launcher, notification or password
/// agent, portal dialogue, or the desktop's own settings. Case is ignored. File managers are none.
bool isLinuxSystemComponent(const QString& bundleIdentifier);

} // namespace orvanta
