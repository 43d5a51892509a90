#include "Views/ReadingOrder.h"

#include <QWidget>

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

void collect(const QWidget& root, std::vector<QWidget*>& controls) {
    auto children = root.findChildren<QWidget*>(Qt::FindDirectChildrenOnly);
    std::ranges::stable_sort(
        children, {}, [](const QWidget* child) { return std::pair(child->y(), child->x()); });
    for (QWidget* child : std::as_const(children)) {
        if (child->isHidden() || child->isWindow()) {
            continue;
        }
        if ((child->focusPolicy() & Qt::TabFocus) == Qt::TabFocus && child->isEnabled()) {
            controls.push_back(child);
        }
        collect(*child, controls);
    }
}

} // namespace

std::vector<QWidget*> controlsInReadingOrder(const QWidget& root) {
    std::vector<QWidget*> controls;
    collect(root, controls);
    return controls;
}

bool moveKeyboard(const QWidget& root, bool forward) {
    const std::vector<QWidget*> controls = controlsInReadingOrder(root);
    if (controls.empty()) {
        return false;
    }
    const auto current = std::ranges::find(controls, root.window()->focusWidget());
    auto next = forward ? controls.begin() : controls.end() - 1;
    if (current != controls.end() && current != (forward ? controls.end() - 1 : controls.begin())) {
        next = forward ? current + 1 : current - 1;
    }
    (*next)->setFocus(forward ? Qt::TabFocusReason : Qt::BacktabFocusReason);
    return true;
}

} // namespace orvanta
