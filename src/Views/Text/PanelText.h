#pragma once

#include "Model/Category.h"
#include "Views/Text/Listing.h"

#include <QString>

#include <optional>

namespace orvanta {

/// A share from 0 to 1 in percent; a dash when there is none.
QString metricPercentage(std::optional<double> ratio);

/// What the title band calls a listing.
QString listingTitle(Listing listing, bool paused);
/// The tooltip of the button that leads to a listing and has this title.
QString listingToolTip(const QString& title);
/// What stands in the place of a listing's rows. `hasTime`: whether any time was counted since the
/// last reset.
QString emptyText(Listing listing, bool hasTime);

QString rowToolTip(const QString& name, Category category);
QString stopTitle(const QString& name);
QString resumeTitle(const QString& name);

/// Of the buttons that give an activity a category.
QString categoryToolTip(const QString& name, Category category, bool isSelected);
QString categoryTitle(const QString& name, Category category);
QString categoryValueText(bool isSelected);

/// What the button that pauses, or goes on, is for.
QString pauseTitle(bool paused);
/// The tooltip of a button of the footer that has this title.
QString footerToolTip(const QString& title);

} // namespace orvanta
