#pragma once

#include <QString>

#include <optional>

namespace orvanta {

/// A share from 0 to 1 in percent; a dash when there is none.
QString metricPercentage(std::optional<double> ratio);

/// What the button that pauses, or goes on, is for.
QString pauseTitle(bool paused);
/// The tooltip of a button of the footer that has this title.
QString footerToolTip(const QString& title);

} // namespace orvanta
