#pragma once

#include <QApplication>

#include <vector>

namespace orvanta {

/// The windows of this kind that a person sees.
template <typename Widget>
std::vector<Widget*> shown() {
    std::vector<Widget*> result;
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* found = dynamic_cast<Widget*>(widget); found && found->isVisible()) {
            result.push_back(found);
        }
    }
    return result;
}

} // namespace orvanta
