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
Setup::Step step(const char* id, Setup::State state) {
    return {QString::fromLatin1(id), u"S"_s, state, false};
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
    QString words = statusToolTip({production, consumption, pending}, paused);
    EXPECT_TRUE(words.startsWith(u"orvanta · "_s));
    EXPECT_TRUE(words.endsWith(u" · Clique direito para Ajustes"_s));
    return title.text() + u' ' + QString::number(static_cast<int>(title.tone)) + u' ' +
           words.mid(10).chopped(30);
}
QString found(const char* text, const char* search, const char* locale = "pt_BR") {
    const QLocale language(QString::fromLatin1(locale));
    return searchText(QString::fromUtf8(text), language)
                   .contains(searchText(QString::fromUtf8(search), language))
               ? u"found"_s
               : u"not found"_s;
}
QString offered(Category category) {
    QStringList names;
    for (const Category each : offeredCategories(category)) {
        names += label(each);
    }
    return names.join(u' ');
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
        {day("2024-01-07") + day("2024-02-05") + day("2024-03-05"), "DOM 7 JANSEG 5 FEVTER 5 MAR"},
        {day("2024-04-10") + day("2024-05-09") + day("2024-06-07"), "QUA 10 ABRQUI 9 MAISEX 7 JUN"},
        {day("2024-07-06") + day("2024-08-04") + day("2024-09-01"), "SÁB 6 JULDOM 4 AGODOM 1 SET"},
        {day("2024-10-31") + day("2024-11-30") + day("2024-12-25"),
         "QUI 31 OUTSÁB 30 NOVQUA 25 DEZ"},
        {dayShares({1800, 600, 50}), "Produção 75% · Consumo 25%"},
        {dayShares({0.5, 0, 50}), "Produção 100% · Consumo 0%"},
        {dayShares({0, 0, 50}), "Sem dados classificados"},
        {metricPercentage(0.625) + metricPercentage(0.635) + metricPercentage({}), "62%64%—"},
        {listingTitle(activities, false) + u' ' + listingTitle(activities, true),
         "MONITORANDO PAUSADO"},
        {listingTitle(unmonitored, true) + u' ' + listingTitle(history, true),
         "NÃO MONITORADOS HISTÓRICO"},
        {listingToolTip(name), "E · clique para manter aberto"},
        {emptyText(unmonitored, true), "Nenhum app ou site não monitorado."},
        {emptyText(activities, true), "Itens breves ocultos · clique direito para mostrar todos."},
        {emptyText(activities, false), "Use um app para iniciar a contagem."},
        {rowToolTip(name, pending), "E · escolha ↑ ou ↓ para classificar"},
        {rowToolTip(name, neutral), "E"},
        {stopTitle(name), "Parar de monitorar E"},
        {resumeTitle(name), "Reativar monitoramento de E"},
        {categoryToolTip(name, production, false), "Marcar E como Produção"},
        {categoryToolTip(name, consumption, true), "Consumo selecionada"},
        {categoryTitle(name, production), "E: Produção"},
        {categoryValueText(true) + u'|' + categoryValueText(false), "Selecionado|Não selecionado"},
        {pauseTitle(false) + u'|' + pauseTitle(true), "Pausar|Retomar"},
        {footerToolTip(u"Zerar tempo"_s), "Zerar tempo"},
        {footerToolTip(u"Sair"_s), "Sair · clique direito para Ajustes"},
        {sitesTitle(name), "Identificar sites no E"},
        {classificationTitle(name, neutral), "E: Não contabilizar"},
        {countStart(1777791900, "UTC"), "3 de mai. de 2026, 07:05"},
        {countStart(1777791900, "America/Sao_Paulo"), "3 de mai. de 2026, 04:05"},
        {countStart(1798761599.9, "UTC"), "31 de dez. de 2026, 23:59"},
        // On a day that began at one o'clock.
        {countStart(1541300400, "America/Sao_Paulo"), "4 de nov. de 2018, 01:00"},
        {setupCounter(1, 2), "1/2"},
        {setupActionLabel(step("login", State::pending)), "PERMITIR"},
        {setupActionLabel(step("login", State::needsSettings)), "AJUSTES"},
        {setupActionLabel(step("login", State::done)), ""},
        {setupActionTitle(step("login", State::pending)), "S: Abrir o orvanta ao entrar no macOS"},
        {setupActionTitle(step("login", State::needsSettings)),
         "S: Ativar o orvanta nos Ajustes do Sistema"},
        {setupActionTitle(step("login", State::done)), "S: Ativo"},
        {setupActionTitle(step("b", State::pending)), "S: Permitir ler o domínio da aba ativa"},
        {setupActionTitle(step("b", State::done)), "S: Permitido"},
        {status(150, 50, 0), "↑ 75/25 1 Produção 75% · Consumo 25% · 3:20"},
        {status(49, 51, 9), "↓ 49/51 2 Produção 49% · Consumo 51% · 1:49"},
        {status(50, 50, 0), "↑ 50/50 1 Produção 50% · Consumo 50% · 1:40"},
        {status(62.5, 37.5, 0), "↑ 62/38 1 Produção 62% · Consumo 38% · 1:40"},
        {status(49.9, 50.1, 0), "↓ 50/50 2 Produção 50% · Consumo 50% · 1:40"},
        {status(7, 0, 0), "↑ 100/0 1 Produção 100% · Consumo 0% · 0:07"},
        {status(0.5, 0, 0), "↑ 100/0 1 Produção 100% · Consumo 0% · 0:00"},
        {status(0, 0, 65), "↑ —/— 0 Sem dados classificados · 1:05"},
        {status(0, 0, 0, true), "Ⅱ —/— 0 Sem dados classificados · 0:00 · Pausado"},
        {status(10, 90, 0, true), "Ⅱ 10/90 0 Produção 10% · Consumo 90% · 1:40 · Pausado"},
        {months("2023-12-10", 87), "DEZ,,,,JAN,,,,FEV,,,,MAR"},
        {months("2023-12-24", 42), ",,JAN,,,"},
        {months("2023-12-17", 21), "DEZ,,"},
        {months("2024-02-25", 14), ",MAR"},
        {months("2024-03-03", 9), "MAR,"},
        {months("2024-03-03", -1) + months("2024-03-03", 0), ""},
        {found("Notes", "note") + found("notes", "NOTE") + found("Notes", ""), "foundfoundfound"},
        {found("EDIÇÃO", "edição") + found("Edição", "edicao"), "foundnot found"},
        {found("Edic\u0327a\u0303o", "edição"), "found"},
        {found("INKSCAPE", "ink", "tr_TR") + found("INKSCAPE", "ınk", "tr_TR"), "not foundfound"},
        {found("ΟΔΟΣΑ", "ΟΔΟΣ", "el_GR"), "found"},
        {offered(pending), "Pendente Produção Consumo Ignorar"},
        {offered(production) + u'|' + offered(ignored),
         "Produção Consumo Ignorar|Produção Consumo Ignorar"},
        {windowWatchingText(WindowWatching::Watching) + windowWatchingText(WindowWatching::Waiting),
         ""},
        {windowWatchingText(WindowWatching::Unsupported),
         "Este ambiente gráfico não informa qual aplicativo está em uso; por isso o orvanta não "
         "consegue contar o tempo."},
        {windowWatchingText(WindowWatching::Ended),
         "O ambiente gráfico foi encerrado; o tempo medido está salvo."},
        {windowWatchingText(WindowWatching::NeedsPermission),
         "O GNOME só informa qual aplicativo está em uso por uma extensão; sem ela o orvanta não "
         "consegue contar o tempo."},
        {windowWatchingText(WindowWatching::NeedsLogin),
         "A extensão do orvanta está instalada. Saia da sessão e entre de novo: a contagem começa "
         "então."},
        {windowWatchingText(WindowWatching::Incompatible),
         "A extensão do orvanta não funciona nesta versão do GNOME; por isso o orvanta não "
         "consegue contar o tempo."},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.said, QString::fromUtf8(row.text));
    }
}
