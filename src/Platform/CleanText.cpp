#include "Platform/CleanText.h"

#include <QCryptographicHash>

#include <algorithm>

namespace orvanta {

namespace {

constexpr qsizetype longestName = 200;
constexpr qsizetype longestIdentifier = 255;
constexpr qsizetype hashDigits = 16;

/// U+202A to U+202E and U+2066 to U+2069 (Unicode Standard Annex 9).
bool turnsDirection(QChar c) {
    return (c >= QChar(0x202A) && c <= QChar(0x202E)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
}

bool breaksLine(QChar c) {
    return c.category() == QChar::Other_Control || c.category() == QChar::Separator_Line ||
           c.category() == QChar::Separator_Paragraph;
}

bool isClean(const QString& text) {
    return std::ranges::none_of(text, [](QChar c) { return turnsDirection(c) || breaksLine(c); });
}

QString cleaned(const QString& text) {
    QString result;
    result.reserve(text.size());
    for (const QChar c : text) {
        if (!turnsDirection(c)) {
            result.append(breaksLine(c) ? QChar(u' ') : c);
        }
    }
    return result.simplified();
}

/// The first `size` units, or one less where that would halve a character.
QString head(const QString& text, qsizetype size) {
    return text.first(text[size - 1].isHighSurrogate() ? size - 1 : size);
}

} // namespace

QString cleanName(const QString& name) {
    const QString clean = isClean(name) ? name : cleaned(name);
    return clean.size() <= longestName ? clean : head(clean, longestName - 1) + QChar(0x2026);
}

QString boundedIdentifier(const QString& identifier) {
    if (identifier.size() <= longestIdentifier && isClean(identifier)) {
        return identifier;
    }
    const QString clean = cleaned(head(identifier, std::min(identifier.size(), longestIdentifier)));
    const QByteArray hash =
        QCryptographicHash::hash(identifier.toUtf8(), QCryptographicHash::Sha256).toHex();
    constexpr qsizetype room = longestIdentifier - hashDigits - 1;
    return (clean.size() <= room ? clean : head(clean, room)) + u'#' +
           QString::fromLatin1(hash.first(hashDigits));
}

} // namespace orvanta
