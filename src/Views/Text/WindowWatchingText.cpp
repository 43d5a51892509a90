#include "Views/Text/WindowWatchingText.h"

namespace orvanta {

QString windowWatchingText(WindowWatching state) {
    switch (state) {
    case WindowWatching::Unsupported:
        return QStringLiteral("Este ambiente gráfico não informa qual aplicativo está em uso; "
                              "por isso o orvanta não consegue contar o tempo.");
    case WindowWatching::Ended:
        return QStringLiteral("O ambiente gráfico foi encerrado; o tempo medido está salvo.");
    case WindowWatching::NeedsPermission:
        return QStringLiteral("O GNOME só informa qual aplicativo está em uso por uma extensão; "
                              "sem ela o orvanta não consegue contar o tempo.");
    case WindowWatching::NeedsLogin:
        return QStringLiteral("A extensão do orvanta está instalada. Saia da sessão e entre de "
                              "novo: a contagem começa então.");
    case WindowWatching::Incompatible:
        return QStringLiteral("A extensão do orvanta não funciona nesta versão do GNOME; por isso "
                              "o orvanta não consegue contar o tempo.");
    case WindowWatching::Waiting:
    case WindowWatching::Watching:
        return {};
    }
    Q_UNREACHABLE();
}

} // namespace orvanta
