#pragma once

#include <QAccessible>
#include <QApplication>
#include <QImage>
#include <QKeySequence>
#include <QPainter>
#include <QTest>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

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

/// The widgets of this kind that a person sees: inside of one, or the windows.
template <typename Widget = QWidget>
std::vector<Widget*> shown(const QWidget* root = nullptr) {
    std::vector<Widget*> result;
    for (QWidget* widget :
         root != nullptr ? root->findChildren<QWidget*>() : QApplication::topLevelWidgets()) {
        if (auto* found = dynamic_cast<Widget*>(widget); found != nullptr && found->isVisible()) {
            result.push_back(found);
        }
    }
    return result;
}
template <typename Widget>
Widget* firstShown(const QWidget* root = nullptr) {
    const auto all = shown<Widget>(root);
    return all.empty() ? nullptr : all.front();
}

/// What it is called, or reads.
inline QString titleOf(const QWidget* widget) {
    return widget == nullptr                    ? QString()
           : widget->accessibleName().isEmpty() ? widget->property("text").toString()
                                                : widget->accessibleName();
}
/// The first visible widget of this title; null when there is none.
template <typename Widget = QWidget>
Widget* find(const QWidget& root, const QString& title) {
    const auto all = shown<Widget>(&root);
    const auto found = std::ranges::find(all, title, titleOf);
    return found != all.end() ? *found : nullptr;
}
/// The same, which has to be there.
template <typename Widget = QWidget>
Widget& named(const QWidget& root, const char* title) {
    auto* const found = find<Widget>(root, QString::fromUtf8(title));
    if (found == nullptr) {
        throw std::runtime_error(title);
    }
    return *found;
}

inline void click(QWidget& widget) {
    QTest::mouseClick(&widget, Qt::LeftButton);
}
/// Presses keys, as "Tab Alt+Down", one after another, wherever in the window the keyboard is, and
/// says who has it after each.
inline QStringList type(QWidget& window, const char* keys) {
    QStringList visited;
    for (const QString& key : QString::fromLatin1(keys).split(u' ')) {
        const QKeyCombination pressed = QKeySequence(key)[0];
        QWidget* const target = window.focusWidget();
        QTest::keyClick(target != nullptr ? target : &window, pressed.key(),
                        pressed.keyboardModifiers());
        visited += titleOf(window.focusWidget());
    }
    return visited;
}
/// So that keys reach it.
inline void activate(QWidget& window) {
    window.show();
    window.activateWindow();
    QApplication::processEvents();
}
/// What is to be deleted later is.
inline void settle() {
    QApplication::processEvents();
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
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
