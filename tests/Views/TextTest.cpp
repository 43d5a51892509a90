#include "Fakes/QtPrinters.h"
#include "Model/Calendar.h"
#include "Views/Text/HistoryText.h"
#include "Views/Text/PanelText.h"
#include "Views/Text/SettingsText.h"
#include "Views/Text/SetupText.h"
#include "Views/Text/StatusText.h"
#include "Views/Text/WindowWatchingText.h"

#include <QLocale>
#include <QTimeZone>

#include <gtest/gtest.h>

using namespace orvanta;
using namespace Qt::StringLiterals;
using enum Category;

namespace {

Date dateOf(const char* text) {
    const QDate day = QDate::fromString(QLatin1StringView(text), Qt::ISODate);
    return Date::fromUnix(static_cast<double>(day.startOfDay(QTimeZone::utc()).toSecsSinceEpoch()));
}
QString countStart(double since1970, const char* zone) {
    return countStartText(Date::fromUnix(since1970), Calendar(QTimeZone(zone)));
}
/// The labels of weeks of seven days, of which the last has as many as are left.
QString months(const char* first, int days) {
    std::vector<std::vector<HistoryDay>> weeks(days < 0 ? 1 : 0);
    for (int i = 0; i < days; ++i) {
        if (i % 7 == 0) {
            weeks.emplace_back();
        }
        weeks.back().push_back({QString(), dateOf(first) + i * 86400.0, {}});
    }
    return monthLabels(weeks, Calendar(QTimeZone::utc())).join(u',');
}
/// The status item's title, its tone and what its words have of their own.
QString status(double production, double consumption, double pending, bool paused = false) {
    const StatusTitle title = statusTitle({production, consumption, pending}, paused);
    return u"%1 %2 %3"_s.arg(title.text(), QString::number(static_cast<int>(title.tone)),
                             statusToolTip({production, consumption, pending}, paused));
}
QString found(const char* text, const char* search, const char* locale = "pt_BR") {
    const QLocale language(QString::fromLatin1(locale));
    return searchText(QString::fromUtf8(text), language)
                   .contains(searchText(QString::fromUtf8(search), language))
               ? u"found"_s
               : u"not found"_s;
}

} // namespace

TEST(TextTest, EveryTextIsTheOneAgreedOn) {
    const Calendar utc(QTimeZone::utc());
    const auto day = [&utc](const char* date) {
        return dayTitle(dateOf(date), utc);
    };
    const QString name = u"E"_s;
    using enum Listing;
    using State = Setup::State;
    const struct {
        QString said;
        const char* text;
    } rows[]{
        {day("2024-01-07") + day("2024-02-05") + day("2024-03-05") + day("2024-04-10"),
         "DOM 7 JANSEG 5 FEVTER 5 MARQUA 10 ABR"},
        {day("2024-05-09") + day("2024-06-07") + day("2024-07-06"), "QUI 9 MAISEX 7 JUNSÁB 6 JUL"},
        {dayShares({0.5, 0, 50}), "Produção 100% · Consumo 0%"},
        {dayShares({0, 0, 50}), "Sem dados classificados"},
        {metricPercentage(0.625) + metricPercentage(0.635) + metricPercentage({}), "62%64%—"},
        {listingToolTip(name), "E · clique para manter aberto"},
        {emptyText(unmonitored, true), "Nenhum app ou site não monitorado."},
        {emptyText(activities, false), "Use um app para iniciar a contagem."},
        {rowToolTip(name, pending), "E · escolha ↑ ou ↓ para classificar"},
        {rowToolTip(name, neutral), "E"},
        {footerToolTip(u"Zerar tempo"_s), "Zerar tempo"},
        {footerToolTip(u"Sair"_s), "Sair · clique direito para Ajustes"},
        {countStart(1777791900, "America/Sao_Paulo"), "3 de mai. de 2026, 04:05"},
        {countStart(1798761599.9, "UTC"), "31 de dez. de 2026, 23:59"},
        {setupCounter(1, 2) + setupActionLabel({{}, {}, State::pending, false}), "1/2PERMITIR"},
        {setupActionTitle({u"login"_s, u"S"_s, State::done, false}), "S: Ativo"},
        {status(62.5, 37.5, 9), "↑ 62/38 1 orvanta · Produção 62% · Consumo 38% · 1:49 · "
                                "Clique direito para Ajustes"},
        {status(49.9, 50.1, 0).first(9) + status(50, 50, 0).first(9), "↓ 50/50 2↑ 50/50 1"},
        {status(0.5, 0, 0).first(9), "↑ 100/0 1"},
        {status(0, 0, 65, true), "Ⅱ —/— 0 orvanta · Sem dados classificados · 1:05 · Pausado · "
                                 "Clique direito para Ajustes"},
        {status(10, 90, 0, true).first(9) + status(0, 0, 9).first(7), "Ⅱ 10/90 0↑ —/— 0"},
        {months("2023-12-10", 357),
         "DEZ,,,,JAN,,,,FEV,,,,MAR,,,,,ABR,,,,MAI,,,,JUN,,,,,JUL,,,,AGO,,,,SET,,,,,OUT,,,,NOV,,,"},
        {months("2023-12-24", 42) + months("2024-03-03", -1), ",,JAN,,,"},
        {months("2024-02-25", 14) + months("2024-03-03", 9), ",MARMAR,"},
        {found("Notes", "note") + found("notes", "NOTE") + found("Notes", ""), "foundfoundfound"},
        {found("EDIÇÃO", "edição") + found("Edição", "edicao"), "foundnot found"},
        {found("Edic\u0327a\u0303o", "edição") + found("ΟΔΟΣΑ", "ΟΔΟΣ", "el_GR"), "foundfound"},
        {found("INKSCAPE", "ink", "tr_TR") + found("INKSCAPE", "ınk", "tr_TR"), "not foundfound"},
        {windowWatchingText(WindowWatching::Watching) + windowWatchingText(WindowWatching::Waiting),
         ""},
        {windowWatchingText(WindowWatching::Ended),
         "O ambiente gráfico foi encerrado; o tempo medido está salvo."},
        {windowWatchingText(WindowWatching::Incompatible),
         "A extensão do orvanta não funciona nesta versão do GNOME; por isso o orvanta não "
         "consegue contar o tempo."},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.said, QString::fromUtf8(row.text));
    }
    EXPECT_EQ(offeredCategories(pending), std::vector({pending, production, consumption, ignored}));
    EXPECT_EQ(offeredCategories(ignored), std::vector({production, consumption, ignored}));
}
