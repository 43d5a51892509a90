#include "Views/Text/SettingsText.h"

#include "Fakes/QtPrinters.h"
#include "Model/Calendar.h"

#include <QLocale>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace orvanta;

TEST(SettingsTextTest, SaysTheStartOfTheCountAsThePersonsClockShowedIt) {
    struct Row {
        double since1970;
        const char* zone;
        const char* text;
    };
    for (const Row& row : {Row{1777791900, "UTC", "3 de mai. de 2026, 07:05"},
                           {1777791900, "America/Sao_Paulo", "3 de mai. de 2026, 04:05"},
                           {1798761599.9, "UTC", "31 de dez. de 2026, 23:59"},
                           // On a day that began at one o'clock.
                           {1541300400, "America/Sao_Paulo", "4 de nov. de 2018, 01:00"}}) {
        EXPECT_EQ(countStartText(Date::fromUnix(row.since1970), Calendar(QTimeZone(row.zone))),
                  QString::fromUtf8(row.text));
    }
}

TEST(SettingsTextTest, SearchesWhateverTheCase) {
    struct Row {
        const char* text;
        const char* search;
        const char* locale;
        bool isFound;
    };
    for (const Row& row : {Row{"Notes", "note", "pt_BR", true},
                           {"notes", "NOTE", "pt_BR", true},
                           {"EDIÇÃO", "edição", "pt_BR", true},
                           {"Edição", "edicao", "pt_BR", false},
                           {"Edic\u0327a\u0303o", "edição", "pt_BR", true},
                           {"INKSCAPE", "ink", "pt_BR", true},
                           {"INKSCAPE", "ink", "tr_TR", false},
                           {"INKSCAPE", "ınk", "tr_TR", true},
                           {"ΟΔΟΣ 1", "οδος", "el_GR", true},
                           {"ΟΔΟΣΑ", "ΟΔΟΣ", "el_GR", true},
                           {"Notes", "", "pt_BR", true}}) {
        const QLocale locale(QString::fromLatin1(row.locale));
        EXPECT_EQ(searchText(QString::fromUtf8(row.text), locale)
                      .contains(searchText(QString::fromUtf8(row.search), locale)),
                  row.isFound)
            << row.text << " " << row.search << " " << row.locale;
    }
}

TEST(SettingsTextTest, OffersPendingOnlyToWhatIsPending) {
    using enum Category;
    EXPECT_EQ(offeredCategories(pending), (std::vector{pending, production, consumption, ignored}));
    for (const Category category : {production, consumption, ignored, neutral}) {
        EXPECT_EQ(offeredCategories(category), (std::vector{production, consumption, ignored}));
    }
}
