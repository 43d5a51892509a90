#pragma once

#include <QSortFilterProxyModel>

namespace orvanta {

class ClassificationModel;

/// The activities whose name contains a text, by name; those of one name in the tracker's order.
class ClassificationSearch final : public QSortFilterProxyModel {
    Q_OBJECT

public:
    explicit ClassificationSearch(ClassificationModel& model, QObject* parent = nullptr);

    void setText(const QString& text);

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    bool lessThan(const QModelIndex& a, const QModelIndex& b) const override;

private:
    const ClassificationModel& model_;
    QString text_;
};

} // namespace orvanta
