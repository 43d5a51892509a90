#include "UnknownBrowsers.h"

#include <QCoreApplication>
#include <QMetaObject>

#include <utility>

namespace orvanta {

void UnknownBrowsers::read(const QString& /*bundleID*/, Completion completion) {
    QMetaObject::invokeMethod(
        QCoreApplication::instance(),
        [completion = std::move(completion)] {
            completion({std::nullopt, QStringLiteral("Navegador não compatível")});
        },
        Qt::QueuedConnection);
}

} // namespace orvanta
