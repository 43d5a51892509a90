#include "Views/Text/StatusText.h"

#include "Model/DurationText.h"
#include "Views/Text/Percent.h"

namespace orvanta {

StatusTitle statusTitle(const StatusTotals& totals, bool paused) {
    constexpr QChar up(u'↑');
    constexpr QChar down(u'↓');
    constexpr QChar pause(u'Ⅱ');
    const double counted = totals.production + totals.consumption;
    if (counted <= 0) {
        return {paused ? pause : up};
    }
    const double production = totals.production / counted;
    StatusTitle title{pause, percent(production), percent(1 - production)};
    if (!paused) {
        const bool half = production >= 0.5;
        title.symbol = half ? up : down;
        title.tone = half ? StatusTitle::Tone::production : StatusTitle::Tone::consumption;
    }
    return title;
}

QString statusToolTip(const StatusTotals& totals, bool paused) {
    const double counted = totals.production + totals.consumption;
    QString text = QStringLiteral("orvanta · ");
    if (counted > 0) {
        const double production = totals.production / counted;
        text += QStringLiteral("Produção ") + QString::number(percent(production)) +
                QStringLiteral("% · Consumo ") + QString::number(percent(1 - production)) +
                QLatin1Char('%');
    } else {
        text += QStringLiteral("Sem dados classificados");
    }
    text += QStringLiteral(" · ") + duration(counted + totals.pending);
    if (paused) {
        text += QStringLiteral(" · Pausado");
    }
    return text + QStringLiteral(" · Clique direito para Ajustes");
}

} // namespace orvanta
