#pragma once

#include "Model/Category.h"

#include <QAbstractListModel>
#include <QLocale>

#include <vector>

namespace orvanta {

class Activity;
class Tracker;

/// The activities that can be classified, in the tracker's order.
class ClassificationModel final : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        categoryRole = Qt::UserRole, ///< the `Category`, as a number
    };

    /// `tracker` outlives it.
    explicit ClassificationModel(const Tracker& tracker, QObject* parent = nullptr);

    /// Takes over what the tracker has now.
    void refresh();

    const Activity& activity(int row) const;
    /// The name as it is searched.
    const QString& searchText(int row) const;

    /// The same of a text to search for.
    QString searched(const QString& text) const;

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    struct Row {
        const Activity* activity;
        Category category; ///< as it was told last
        QString searchText;
    };
    Row row(const Activity& activity) const;

    const Tracker& tracker_;
    QLocale locale_;
    std::vector<Row> rows_;
};

} // namespace orvanta
