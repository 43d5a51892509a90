#pragma once

#include "Setup/Setup.h"

#include <QString>

namespace orvanta {

/// How many of the required steps are done, as "1/2".
QString setupCounter(std::size_t done, std::size_t required);

/// What the button of a step reads; empty for one that is done, which has a mark instead.
QString setupActionLabel(const Setup::Step& step);
QString setupActionToolTip(const Setup::Step& step);
/// What a screen reader says of the button.
QString setupActionTitle(const Setup::Step& step);

} // namespace orvanta
