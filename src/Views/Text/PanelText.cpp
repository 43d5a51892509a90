#include "Views/Text/PanelText.h"

namespace orvanta {

QString metricPercentage(std::optional<double> ratio) {
    return ratio ? QString::asprintf("%.0f%%", *ratio * 100) : QStringLiteral("—");
}

QString pauseTitle(bool paused) {
    return paused ? QStringLiteral("Retomar") : QStringLiteral("Pausar");
}

QString footerToolTip(const QString& title) {
    return title == QStringLiteral("Sair")
               ? title + QStringLiteral(" · clique direito para Ajustes")
               : title;
}

} // namespace orvanta
