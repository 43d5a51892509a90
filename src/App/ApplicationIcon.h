#pragma once

#include <QIcon>

namespace orvanta {

/// Orvanta's icon, drawn when somebody looks at it: the two arrows of packaging/'s image.
QIcon applicationIcon();

} // namespace orvanta
