#pragma once

#include <QtGlobal>

#include <vector>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace orvanta {

/// The visible controls in a widget that Tab stops at, as one reads: from the top, and from the
/// left; all of one part before the next.
std::vector<QWidget*> controlsInReadingOrder(const QWidget& root);

/// Moves the keyboard to the next or the previous of them, round from the last to the first. False
/// when there is none.
bool moveKeyboard(const QWidget& root, bool forward);

} // namespace orvanta
