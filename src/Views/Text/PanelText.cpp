#include "Views/Text/PanelText.h"

#include "Views/Text/Percent.h"

namespace orvanta {

QString metricPercentage(std::optional<double> ratio) {
    return ratio ? QString::number(percent(*ratio)) + u'%' : QStringLiteral("—");
}

QString listingTitle(Listing listing, bool paused) {
    switch (listing) {
    case Listing::unmonitored:
        return QStringLiteral("NÃO MONITORADOS");
    case Listing::history:
        return QStringLiteral("HISTÓRICO");
    case Listing::activities:
        break;
    }
    return paused ? QStringLiteral("PAUSADO") : QStringLiteral("MONITORANDO");
}

QString listingToolTip(const QString& title) {
    return title + QStringLiteral(" · clique para manter aberto");
}

QString emptyText(Listing listing, bool hasTime) {
    if (listing == Listing::unmonitored) {
        return QStringLiteral("Nenhum app ou site não monitorado.");
    }
    return hasTime ? QStringLiteral("Itens breves ocultos · clique direito para mostrar todos.")
                   : QStringLiteral("Use um app para iniciar a contagem.");
}

QString rowToolTip(const QString& name, Category category) {
    return category == Category::pending
               ? name + QStringLiteral(" · escolha ↑ ou ↓ para classificar")
               : name;
}

QString stopTitle(const QString& name) {
    return QStringLiteral("Parar de monitorar ") + name;
}

QString resumeTitle(const QString& name) {
    return QStringLiteral("Reativar monitoramento de ") + name;
}

QString categoryToolTip(const QString& name, Category category, bool isSelected) {
    return isSelected
               ? label(category) + QStringLiteral(" selecionada")
               : QStringLiteral("Marcar ") + name + QStringLiteral(" como ") + label(category);
}

QString categoryTitle(const QString& name, Category category) {
    return name + QStringLiteral(": ") + label(category);
}

QString categoryValueText(bool isSelected) {
    return isSelected ? QStringLiteral("Selecionado") : QStringLiteral("Não selecionado");
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
