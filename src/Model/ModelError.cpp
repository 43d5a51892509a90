#include "Model/ModelError.h"

namespace orvanta {

ModelError::ModelError(QLatin1StringView domain, int code, const QString& localizedDescription)
    : domain_(domain)
    , code_(code)
    , localizedDescription_(localizedDescription)
    , what_(localizedDescription.toUtf8()) {}

} // namespace orvanta
