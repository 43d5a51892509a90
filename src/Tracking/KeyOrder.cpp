#include "Tracking/KeyOrder.h"

#include <QList>
#include <QString>

#include <algorithm>

namespace orvanta {

namespace {

/// Up to here nothing composes with what stands before it, and a code unit is a character.
bool isPlain(QStringView text) {
    constexpr char16_t firstCombining = 0x300;
    return std::ranges::all_of(text, [](QChar c) { return c.unicode() < firstCombining; });
}

/// Code units would put the characters beyond U+FFFF, which take two of them, before U+E000.
QList<uint> characters(QStringView text) {
    return text.toString().normalized(QString::NormalizationForm_C).toUcs4();
}

} // namespace

std::weak_ordering compareKeys(QStringView a, QStringView b) {
    if (isPlain(a) && isPlain(b)) {
        return a.compare(b) <=> 0;
    }
    const QList<uint> left = characters(a);
    const QList<uint> right = characters(b);
    return std::lexicographical_compare_three_way(left.begin(), left.end(), right.begin(),
                                                  right.end());
}

} // namespace orvanta
