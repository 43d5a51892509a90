#pragma once

#include <QAccessible>

QT_BEGIN_NAMESPACE
class QWidget;
QT_END_NAMESPACE

namespace orvanta {

/// Says what a widget is to a screen reader, where its class does not tell. To be said before
/// anybody asks.
void setAccessibleRole(QWidget& widget, QAccessible::Role role);

/// The value that goes with the widget's accessible name. Needs a role.
void setAccessibleValue(QWidget& widget, const QString& value);

} // namespace orvanta
