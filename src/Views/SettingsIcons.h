#pragma once

#include <QIcon>

namespace orvanta {

/// For the tabs of the settings: drawn, as a desktop need not have them, in the colour of its
/// texts.
QIcon gearIcon();
QIcon tagIcon();

} // namespace orvanta
