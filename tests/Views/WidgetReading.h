#pragma once

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QImage>
#include <QPainter>
#include <QStringList>
#include <QWidget>

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>

namespace orvanta {

inline QStringList lines(std::initializer_list<const char*> texts) {
    QStringList result;
    for (const char* text : texts) {
        result += QString::fromUtf8(text);
    }
    return result;
}

/// What a screen reader finds, depth first: a line for everything that has a name, as
/// "Button Pausar" or "CheckBox a: Produção = Selecionado".
inline QStringList accessibleLines(QAccessibleInterface* at) {
    QStringList lines;
    if (at == nullptr || at->state().invisible) {
        return lines;
    }
    const QString name = at->text(QAccessible::Name);
    const QString value = at->text(QAccessible::Value);
    if (!name.isEmpty()) {
        const QString role = at->role() == QAccessible::Button       ? QStringLiteral("Button ")
                             : at->role() == QAccessible::StaticText ? QStringLiteral("Text ")
                                                                     : QString();
        lines += role + name + (value.isEmpty() ? QString() : QStringLiteral(" = ") + value);
    }
    for (int i = 0; i < at->childCount(); ++i) {
        lines += accessibleLines(at->child(i));
    }
    return lines;
}
inline QStringList accessibleLines(QWidget& widget) {
    return accessibleLines(QAccessible::queryAccessibleInterface(&widget));
}

/// The one visible widget of this accessible name.
template <typename Widget = QWidget>
Widget* named(QWidget& root, const char* name) {
    const auto widgets = root.findChildren<Widget*>();
    const auto found = std::ranges::find_if(widgets, [&](const Widget* widget) {
        return widget->accessibleName() == QString::fromUtf8(name) && widget->isVisibleTo(&root);
    });
    EXPECT_NE(found, widgets.end()) << name;
    return found != widgets.end() ? *found : nullptr;
}

/// So that keys reach it.
inline void activate(QWidget& window) {
    window.activateWindow();
    QApplication::processEvents();
}

/// The widget as a device with this many pixels a point shows it.
inline QImage picture(QWidget& widget, double ratio = 1) {
    QImage image((QSizeF(widget.size()) * ratio).toSize(), QImage::Format_RGB32);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::magenta);
    widget.render(&image);
    return image;
}

/// How many pixels of an area, in pixels, have exactly this colour.
inline int count(const QImage& image, const QColor& color,
                 const QRect& area = QRect(0, 0, 1 << 20, 1 << 20)) {
    const QRect inside = area & image.rect();
    int result = 0;
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x) {
            result += image.pixel(x, y) == color.rgb() ? 1 : 0;
        }
    }
    return result;
}

} // namespace orvanta
