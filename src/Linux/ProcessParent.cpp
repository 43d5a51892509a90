#include "Linux/ProcessParent.h"

#include <QByteArray>
#include <QFile>

namespace orvanta {

/// The fourth field of proc(5)'s stat; the second, in brackets, may hold anything.
std::optional<qint64> parentOf(qint64 process, const QString& processes) {
    constexpr qint64 limit = 4096;
    QFile file(QStringLiteral("%1/%2/stat").arg(processes, QString::number(process)));
    const QByteArray stat = file.open(QIODevice::ReadOnly) ? file.read(limit) : QByteArray();
    const QByteArray rest = stat.mid(stat.lastIndexOf(')') + 2);
    bool isNumber = false;
    const qint64 parent = rest.split(' ').value(1).toLongLong(&isNumber);
    return isNumber && parent > 1 ? std::optional(parent) : std::nullopt;
}

} // namespace orvanta
