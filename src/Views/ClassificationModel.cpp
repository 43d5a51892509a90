#include "Views/ClassificationModel.h"

#include "Model/Activity.h"
#include "Platform/CleanText.h"
#include "Tracking/Tracker.h"
#include "Views/Text/SettingsText.h"

#include <utility>

namespace orvanta {

ClassificationModel::ClassificationModel(const Tracker& tracker, QObject* parent)
    : QAbstractListModel(parent)
    , tracker_(tracker) {}

void ClassificationModel::refresh() {
    const std::vector<const Activity*> current = tracker_.classifiableActivities();
    if (rows_.empty()) {
        beginResetModel();
        rows_.reserve(current.size());
        for (const Activity* const activity : current) {
            rows_.push_back(row(*activity));
        }
        endResetModel();
        return;
    }
    // Both stand in store order. What stays is left where it is, and with it a picker that is open.
    std::size_t i = 0;
    const auto at = [this](std::size_t place) {
        return rows_.begin() + static_cast<std::ptrdiff_t>(place);
    };
    const auto removeAt = [&](std::size_t place) {
        beginRemoveRows({}, static_cast<int>(place), static_cast<int>(place));
        rows_.erase(at(place));
        endRemoveRows();
    };
    for (const Activity* const activity : current) {
        while (i < rows_.size() && rows_[i].activity->row() < activity->row()) {
            removeAt(i);
        }
        const int place = static_cast<int>(i);
        if (i == rows_.size() || rows_[i].activity != activity) {
            beginInsertRows({}, place, place);
            rows_.insert(at(i), row(*activity));
            endInsertRows();
        } else if (rows_[i].category != activity->category()) {
            rows_[i].category = activity->category();
            Q_EMIT dataChanged(index(place), index(place));
        }
        ++i;
    }
    while (i < rows_.size()) {
        removeAt(rows_.size() - 1);
    }
}

ClassificationModel::Row ClassificationModel::row(const Activity& activity) const {
    return {&activity, activity.category(), searched(cleanName(activity.name()))};
}

const Activity& ClassificationModel::activity(int row) const {
    return *rows_[static_cast<std::size_t>(row)].activity;
}

const QString& ClassificationModel::searchText(int row) const {
    return rows_[static_cast<std::size_t>(row)].searchText;
}

QString ClassificationModel::searched(const QString& text) const {
    return orvanta::searchText(text, locale_);
}

int ClassificationModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

QVariant ClassificationModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const Row& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case Qt::DisplayRole:
        return cleanName(row.activity->name());
    case Qt::AccessibleTextRole:
        return classificationTitle(cleanName(row.activity->name()), row.category);
    case categoryRole:
        return static_cast<int>(row.category);
    default:
        return {};
    }
}

} // namespace orvanta
