#include "Views/Text/SettingsText.h"

#include "Model/Calendar.h"

#include <QLocale>

namespace orvanta {

QString sitesTitle(const QString& browserName) {
    return QStringLiteral("Identificar sites no ") + browserName;
}

QString countStartText(Date start, const Calendar& calendar) {
    return QLocale(QLocale::Portuguese, QLocale::Brazil)
        .toString(calendar.local(start), QStringLiteral("d 'de' MMM 'de' yyyy, HH:mm"));
}

std::vector<Category> offeredCategories(Category category) {
    std::vector<Category> result{Category::production, Category::consumption, Category::ignored};
    if (category == Category::pending) {
        result.insert(result.begin(), Category::pending);
    }
    return result;
}

QString classificationTitle(const QString& activityName, Category category) {
    return activityName + QStringLiteral(": ") + label(category);
}

QString searchText(const QString& text, const QLocale& locale) {
    // Languages differ in the small letters of some capitals, as of I. What they leave, such as a
    // sigma's form at the end of a word, is the same for all.
    return locale.toLower(text).toCaseFolded().normalized(QString::NormalizationForm_C);
}

} // namespace orvanta
