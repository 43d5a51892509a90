#include "Model/Category.h"

namespace orvanta {

QString rawValue(Category category) {
    switch (category) {
    case Category::production:
        return QStringLiteral("production");
    case Category::consumption:
        return QStringLiteral("consumption");
    case Category::pending:
        return QStringLiteral("pending");
    case Category::ignored:
        return QStringLiteral("ignored");
    case Category::neutral:
        return QStringLiteral("neutral");
    }
    Q_UNREACHABLE();
}

std::optional<Category> categoryFromRawValue(QStringView text) {
    for (const Category category : allCases) {
        if (text == rawValue(category)) {
            return category;
        }
    }
    return std::nullopt;
}

QString label(Category category) {
    switch (category) {
    case Category::production:
        return QStringLiteral("Produção");
    case Category::consumption:
        return QStringLiteral("Consumo");
    case Category::pending:
        return QStringLiteral("Pendente");
    case Category::ignored:
        return QStringLiteral("Ignorar");
    case Category::neutral:
        return QStringLiteral("Não contabilizar");
    }
    Q_UNREACHABLE();
}

} // namespace orvanta
