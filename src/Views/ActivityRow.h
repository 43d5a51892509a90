#pragma once

#include "Model/Category.h"
#include "Views/Text/Listing.h"

#include <QWidget>

#include <vector>

namespace orvanta {

class Activity;
class Appearance;
class CategoryButton;
class GridButton;
class NameCell;
class StopButton;

/// A row of a listing: an activity, its time, and what can be done with it.
class ActivityRow final : public QWidget {
    Q_OBJECT

public:
    /// `listing` is one of the two that have rows.
    ActivityRow(const Appearance& appearance, Listing listing, QWidget* parent = nullptr);

    /// What the row is about; null before the first `show`.
    const Activity* activity() const { return activity_; }
    void show(const Activity& activity, bool isTimed);

    /// Whether the pointer is over it, which shows the button that stops.
    void setHovered(bool hovered);

    /// From left to right.
    const std::vector<GridButton*>& controls() const { return controls_; }

Q_SIGNALS:
    void pointerCame();
    void pointerWent();
    void stopRequested(const orvanta::Activity* activity);
    void classificationRequested(const orvanta::Activity* activity, orvanta::Category category);
    void resumeRequested(const orvanta::Activity* activity);

protected:
    void enterEvent(QEnterEvent* event) override;
    void leaveEvent(QEvent* event) override;

private:
    CategoryButton* addCategoryButton(const Appearance& appearance, Category category, int x);

    const Activity* activity_ = nullptr;
    Category category_ = Category::pending;
    NameCell* name_;
    StopButton* stop_ = nullptr; // In the activities, as these two:
    std::vector<CategoryButton*> categories_;
    GridButton* resume_ = nullptr; // In the other listing.
    std::vector<GridButton*> controls_;
};

} // namespace orvanta
