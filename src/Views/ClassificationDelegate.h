#pragma once

#include <QStyledItemDelegate>

namespace orvanta {

/// Draws an activity's name and, at the row's end, the picker of its category: a control that costs
/// nothing until it is used.
class ClassificationDelegate final : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit ClassificationDelegate(QWidget* list);

    /// Of a row that fills this area.
    QRect pickerArea(const QRect& row) const;

    void paint(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

Q_SIGNALS:
    void pickerPressed(const QModelIndex& index);

protected:
    bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                     const QModelIndex& index) override;

private:
    QSize pickerSize() const;

    QWidget* list_;
};

} // namespace orvanta
