#include "Views/ClassificationList.h"

#include "Views/ClassificationDelegate.h"
#include "Views/ClassificationModel.h"
#include "Views/Text/SettingsText.h"

#include <QActionGroup>
#include <QKeyEvent>
#include <QMenu>
#include <QPersistentModelIndex>

namespace orvanta {

ClassificationList::ClassificationList(QWidget* parent)
    : QListView(parent)
    , delegate_(new ClassificationDelegate(this)) {
    setItemDelegate(delegate_);
    setUniformItemSizes(true);
    setEditTriggers(NoEditTriggers);
    setVerticalScrollMode(ScrollPerPixel);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(delegate_, &ClassificationDelegate::pickerPressed, this,
            &ClassificationList::openPicker);
}

void ClassificationList::keyPressEvent(QKeyEvent* event) {
    const int key = event->key();
    const bool opens = key == Qt::Key_Space || key == Qt::Key_Return || key == Qt::Key_Enter ||
                       key == Qt::Key_F4 ||
                       (key == Qt::Key_Down && event->modifiers().testFlag(Qt::AltModifier));
    if (opens && currentIndex().isValid()) {
        scrollTo(currentIndex());
        openPicker(currentIndex());
        return;
    }
    QListView::keyPressEvent(event);
}

void ClassificationList::openPicker(const QModelIndex& index) {
    const auto current =
        static_cast<Category>(index.data(ClassificationModel::categoryRole).toInt());
    auto* const menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setAccessibleName(QStringLiteral("Categoria"));
    auto* const group = new QActionGroup(menu);
    QAction* checked = nullptr;
    for (const Category category : offeredCategories(current)) {
        QAction* const action = menu->addAction(label(category));
        action->setCheckable(true);
        group->addAction(action);
        if (category == current) {
            action->setChecked(true);
            checked = action;
            continue; // Choosing what is chosen changes nothing.
        }
        connect(action, &QAction::triggered, this,
                [this, row = QPersistentModelIndex(index), category] {
                    if (row.isValid()) {
                        Q_EMIT categoryChosen(row, category);
                    }
                });
    }
    const QRect area = delegate_->pickerArea(visualRect(index));
    menu->setMinimumWidth(area.width());
    menu->popup(viewport()->mapToGlobal(area.bottomLeft() + QPoint(0, 1)));
    menu->setActiveAction(checked != nullptr ? checked : menu->actions().constFirst());
}

} // namespace orvanta
