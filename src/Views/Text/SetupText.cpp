#include "Views/Text/SetupText.h"

namespace orvanta {

QString setupCounter(std::size_t done, std::size_t required) {
    return QString::number(done) + u'/' + QString::number(required);
}

QString setupActionLabel(const Setup::Step& step) {
    switch (step.state) {
    case Setup::State::pending:
        return QStringLiteral("PERMITIR");
    case Setup::State::needsSettings:
        return QStringLiteral("AJUSTES");
    case Setup::State::done:
        break;
    }
    return {};
}

QString setupActionToolTip(const Setup::Step& step) {
    const bool isLogin = step.id == QStringLiteral("login");
    switch (step.state) {
    case Setup::State::pending:
        return isLogin ? QStringLiteral("Abrir o orvanta ao entrar no macOS")
                       : QStringLiteral("Permitir ler o domínio da aba ativa");
    case Setup::State::done:
        return isLogin ? QStringLiteral("Ativo") : QStringLiteral("Permitido");
    case Setup::State::needsSettings:
        break;
    }
    return QStringLiteral("Ativar o orvanta nos Ajustes do Sistema");
}

QString setupActionTitle(const Setup::Step& step) {
    return step.name + QStringLiteral(": ") + setupActionToolTip(step);
}

} // namespace orvanta
