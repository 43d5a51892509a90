#include "WindowWatchingText.h"

namespace orvanta {

QString windowWatchingText(WindowWatcher::State state) {
    switch (state) {
    case WindowWatcher::State::Unsupported:
        return QStringLiteral("Este ambiente gráfico não informa qual aplicativo está em uso; "
                              "por isso o orvanta não consegue contar o tempo.");
    case WindowWatcher::State::Ended:
        return QStringLiteral("O ambiente gráfico foi encerrado; o tempo medido está salvo.");
    case WindowWatcher::State::Waiting:
    case WindowWatcher::State::Watching:
        return {};
    }
    Q_UNREACHABLE();
}

} // namespace orvanta
