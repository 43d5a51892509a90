#pragma once

#include "Testing.h"

#include <QApplication>
#include <QLabel>
#include <QPushButton>

namespace orvanta {

/// The visible window of this kind, or null.
template <typename T>
T* shown() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* window = qobject_cast<T*>(widget); window && window->isVisible()) {
            return window;
        }
    }
    return nullptr;
}

/// What is visible of this kind in a window, in reading order.
template <typename T>
QList<T*> visible(const QWidget* window) {
    QList<T*> all = window ? window->findChildren<T*>() : QList<T*>();
    all.removeIf([window](const T* each) { return !each->isVisibleTo(window); });
    return all;
}

template <typename T>
QStringList texts(const QWidget* window) {
    QStringList all;
    for (const T* each : visible<T>(window)) {
        all.append(each->text());
    }
    return all;
}

inline void click(const QWidget* window, const QString& text) {
    const qsizetype at = texts<QPushButton>(window).indexOf(text);
    ASSERT_GE(at, 0) << qPrintable(text);
    visible<QPushButton>(window)[at]->click();
}

} // namespace orvanta
