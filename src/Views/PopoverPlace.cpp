#include "Views/PopoverPlace.h"

#include <algorithm>

namespace orvanta {

namespace {

/// Between the point that was clicked and the popover, where no panel's edge separates them.
constexpr int gap = 12;

/// Begins in the area, and ends in it too if it is not larger.
int within(int place, int length, int areaBegin, int areaLength) {
    return std::max(areaBegin, std::min(place, areaBegin + areaLength - length));
}

/// How far outside of the rectangle.
int distance(const QRect& area, QPoint point) {
    const int x = std::max({area.left() - point.x(), 0, point.x() - area.right()});
    const int y = std::max({area.top() - point.y(), 0, point.y() - area.bottom()});
    return x + y;
}

QPoint besideClick(QPoint clicked, const QRect& area, QSize size) {
    const int centred = clicked.x() - size.width() / 2;
    const int middle = clicked.y() - size.height() / 2;
    if (clicked.y() < area.top()) {
        return {centred, area.top()};
    }
    if (clicked.y() > area.bottom()) {
        return {centred, area.bottom() + 1 - size.height()};
    }
    if (clicked.x() < area.left()) {
        return {area.left(), middle};
    }
    if (clicked.x() > area.right()) {
        return {area.right() + 1 - size.width(), middle};
    }
    const bool fitsBelow = clicked.y() + gap + size.height() <= area.bottom() + 1;
    return {centred, fitsBelow ? clicked.y() + gap : clicked.y() - gap - size.height()};
}

QPoint atPanel(const ScreenArea& screen, QSize size) {
    const QRect& area = screen.workArea;
    const int above = area.top() - screen.geometry.top();
    const int below = screen.geometry.bottom() - area.bottom();
    const int before = area.left() - screen.geometry.left();
    const int after = screen.geometry.right() - area.right();
    return {before > std::max({above, below, after}) ? area.left()
                                                     : area.right() + 1 - size.width(),
            above >= below ? area.top() : area.bottom() + 1 - size.height()};
}

} // namespace

QPoint popoverPlace(std::optional<QPoint> clicked, const std::vector<ScreenArea>& screens,
                    QSize size) {
    if (screens.empty()) {
        return clicked.value_or(QPoint());
    }
    const auto screen = clicked
                            ? std::ranges::min_element(screens, {},
                                                       [&clicked](const ScreenArea& each) {
                                                           return distance(each.geometry, *clicked);
                                                       })
                            : screens.begin();
    const QRect& area = screen->workArea;
    const QPoint place = clicked ? besideClick(*clicked, area, size) : atPanel(*screen, size);
    return {within(place.x(), size.width(), area.left(), area.width()),
            within(place.y(), size.height(), area.top(), area.height())};
}

} // namespace orvanta
