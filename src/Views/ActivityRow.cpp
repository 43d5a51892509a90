#include "Views/ActivityRow.h"

#include "Model/Activity.h"
#include "Model/DurationText.h"
#include "Platform/CleanText.h"
#include "Views/Accessibility.h"
#include "Views/CategoryButton.h"
#include "Views/NameCell.h"
#include "Views/PanelGeometry.h"
#include "Views/StopButton.h"
#include "Views/Text/PanelText.h"

namespace orvanta {

ActivityRow::ActivityRow(const Appearance& appearance, Listing listing, QWidget* parent)
    : QWidget(parent)
    , name_(new NameCell(appearance, listing == Listing::activities ? StopButton::seenWidth : 0,
                         this)) {
    setFixedSize(panelWidth, rowHeight);
    setAccessibleRole(*this, QAccessible::ListItem);
    if (listing == Listing::activities) {
        stop_ = new StopButton(appearance, name_);
        connect(stop_, &GridButton::clicked, this, [this] { Q_EMIT stopRequested(activity_); });
        categories_ = {addCategoryButton(appearance, Category::production, nameWidth),
                       addCategoryButton(appearance, Category::consumption, nameWidth + rowHeight)};
        controls_ = {stop_, categories_[0], categories_[1]};
    } else {
        resume_ = new GridButton(appearance, QSize(panelWidth - nameWidth, rowHeight),
                                 Qt::BottomEdge, this);
        resume_->move(nameWidth, 0);
        resume_->setLabel({.symbol = Symbol::plusSquare, .ink = GridButton::Ink::green});
        connect(resume_, &GridButton::clicked, this, [this] { Q_EMIT resumeRequested(activity_); });
        controls_ = {resume_};
    }
}

CategoryButton* ActivityRow::addCategoryButton(const Appearance& appearance, Category category,
                                               int x) {
    auto* const button = new CategoryButton(appearance, category, this);
    button->move(x, 0);
    connect(button, &GridButton::clicked, this,
            [this, category] { Q_EMIT classificationRequested(activity_, category); });
    return button;
}

void ActivityRow::show(const Activity& activity, bool isTimed) {
    const bool isSame = activity_ == &activity;
    const bool isSameCategory = isSame && category_ == activity.category();
    activity_ = &activity;
    category_ = activity.category();

    name_->setContent({.name = cleanName(activity.name()),
                       .duration = duration(activity.seconds()),
                       .isMuted = category_ == Category::ignored,
                       .isTimed = isTimed});
    if (stop_ != nullptr) {
        stop_->placeAt(name_->buttonX());
    }
    if (isSameCategory) {
        return;
    }
    const QString name = cleanName(activity.name());
    setAccessibleName(name);
    const QString toolTip = rowToolTip(name, category_);
    name_->setToolTip(toolTip);
    name_->setAccessibleDescription(toolTip);
    for (CategoryButton* button : categories_) {
        button->setSelected(name, category_ == button->category(), isSame);
    }
    if (stop_ != nullptr) {
        stop_->setTitles(stopTitle(name), stopTitle(name));
    }
    if (resume_ != nullptr) {
        resume_->setTitles(resumeTitle(name), resumeTitle(name));
    }
    if (!isSame) {
        for (GridButton* control : controls_) {
            control->setDown(false); // A press that began on another activity is none on this.
        }
    }
}

void ActivityRow::setHovered(bool hovered) {
    if (stop_ != nullptr) {
        stop_->setRevealed(hovered);
    }
}

void ActivityRow::enterEvent(QEnterEvent* event) {
    QWidget::enterEvent(event);
    Q_EMIT pointerCame();
}

void ActivityRow::leaveEvent(QEvent* event) {
    QWidget::leaveEvent(event);
    Q_EMIT pointerWent();
}

} // namespace orvanta
