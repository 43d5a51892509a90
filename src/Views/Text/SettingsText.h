#pragma once

#include "Model/Category.h"
#include "Model/Date.h"

#include <QString>

#include <vector>

QT_BEGIN_NAMESPACE
class QLocale;
QT_END_NAMESPACE

namespace orvanta {

class Calendar;

/// What a browser's switch is for.
QString sitesTitle(const QString& browserName);

/// The moment since when time is counted, as "3 de mai. de 2026, 07:05".
QString countStartText(Date start, const Calendar& calendar);

/// What a picker offers for an activity of this category.
std::vector<Category> offeredCategories(Category category);
/// What a screen reader says of an activity's row.
QString classificationTitle(const QString& activityName, Category category);

/// A text as it is searched: one contains another, whatever their case in the person's language,
/// when its search text contains the other's.
QString searchText(const QString& text, const QLocale& locale);

} // namespace orvanta
