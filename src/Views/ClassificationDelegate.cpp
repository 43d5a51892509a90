#include "Views/ClassificationDelegate.h"

#include "Model/Category.h"
#include "Views/ClassificationModel.h"
#include "Views/Text/SettingsText.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace orvanta {

namespace {

constexpr int pickerWidth = 125;
constexpr int nameMargin = 6; // Around the name, and beside the picker.

QStyleOptionComboBox pickerOption(const QWidget& list, const QRect& area) {
    QStyleOptionComboBox option;
    option.initFrom(&list);
    // It is no control of its own for the keyboard, nor for the pointer over the list.
    option.state &= ~(QStyle::State_HasFocus | QStyle::State_MouseOver);
    option.rect = area;
    return option;
}

} // namespace

ClassificationDelegate::ClassificationDelegate(QWidget* list)
    : QStyledItemDelegate(list)
    , list_(list) {}

QSize ClassificationDelegate::pickerSize() const {
    const QFontMetrics metrics = list_->fontMetrics();
    int width = 0;
    for (const Category category : offeredCategories(Category::pending)) {
        width = qMax(width, metrics.horizontalAdvance(label(category)));
    }
    const QStyleOptionComboBox option = pickerOption(*list_, {});
    const QSize needed = list_->style()->sizeFromContents(QStyle::CT_ComboBox, &option,
                                                          QSize(width, metrics.height()), list_);
    return {qMax(pickerWidth, needed.width()), needed.height()};
}

QRect ClassificationDelegate::pickerArea(const QRect& row) const {
    const QSize size = pickerSize();
    return QStyle::alignedRect(Qt::LeftToRight, Qt::AlignRight | Qt::AlignVCenter, size,
                               row.adjusted(0, 0, -nameMargin, 0));
}

void ClassificationDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                                   const QModelIndex& index) const {
    QStyleOptionViewItem row(option);
    initStyleOption(&row, index);
    const QString name = row.text;
    row.text.clear();
    const QStyle& style = *list_->style();
    style.drawControl(QStyle::CE_ItemViewItem, &row, painter, list_);

    const QRect picker = pickerArea(option.rect);
    QRect area = option.rect.adjusted(nameMargin, 0, 0, 0);
    area.setRight(picker.left() - nameMargin);
    const bool isSelected = row.state.testFlag(QStyle::State_Selected);
    row.palette.setCurrentColorGroup(row.state.testFlag(QStyle::State_Active) ? QPalette::Active
                                                                              : QPalette::Inactive);
    style.drawItemText(painter, area, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine,
                       row.palette, true,
                       row.fontMetrics.elidedText(name, Qt::ElideMiddle, area.width()),
                       isSelected ? QPalette::HighlightedText : QPalette::Text);

    QStyleOptionComboBox combo = pickerOption(*list_, picker);
    const auto category =
        static_cast<Category>(index.data(ClassificationModel::categoryRole).toInt());
    const int room =
        style.subControlRect(QStyle::CC_ComboBox, &combo, QStyle::SC_ComboBoxEditField, list_)
            .width();
    // What older versions stored may be longer than what is offered.
    combo.currentText = combo.fontMetrics.elidedText(label(category), Qt::ElideRight, room);
    style.drawComplexControl(QStyle::CC_ComboBox, &combo, painter, list_);
    style.drawControl(QStyle::CE_ComboBoxLabel, &combo, painter, list_);
}

QSize ClassificationDelegate::sizeHint(const QStyleOptionViewItem& /*option*/,
                                       const QModelIndex& /*index*/) const {
    const QSize picker = pickerSize();
    return {picker.width() + 3 * nameMargin, picker.height() + nameMargin};
}

bool ClassificationDelegate::editorEvent(QEvent* event, QAbstractItemModel* model,
                                         const QStyleOptionViewItem& option,
                                         const QModelIndex& index) {
    if (event->type() == QEvent::MouseButtonPress) {
        const auto& press = static_cast<const QMouseEvent&>(*event);
        if (press.button() == Qt::LeftButton &&
            pickerArea(option.rect).contains(press.position().toPoint())) {
            Q_EMIT pickerPressed(index);
            return true;
        }
    }
    return QStyledItemDelegate::editorEvent(event, model, option, index);
}

} // namespace orvanta
