#pragma once

#include <QVBoxLayout>

namespace orvanta {

/// A layout that puts one widget right under the other.
inline QVBoxLayout* unspacedColumn(QWidget* parent) {
    auto* const column = new QVBoxLayout(parent);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    return column;
}

} // namespace orvanta
