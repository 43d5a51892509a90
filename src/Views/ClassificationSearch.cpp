#include "Views/ClassificationSearch.h"

#include "Model/Activity.h"
#include "Tracking/KeyOrder.h"
#include "Views/ClassificationModel.h"

namespace orvanta {

ClassificationSearch::ClassificationSearch(ClassificationModel& model, QObject* parent)
    : QSortFilterProxyModel(parent)
    , model_(model) {
    setSourceModel(&model);
    sort(0);
}

void ClassificationSearch::setText(const QString& text) {
    text_ = model_.searched(text);
    invalidateFilter();
}

bool ClassificationSearch::filterAcceptsRow(int row, const QModelIndex& /*parent*/) const {
    return model_.searchText(row).contains(text_);
}

bool ClassificationSearch::lessThan(const QModelIndex& a, const QModelIndex& b) const {
    const auto order =
        compareKeys(model_.activity(a.row()).name(), model_.activity(b.row()).name());
    return order < 0 || (order == 0 && a.row() < b.row());
}

} // namespace orvanta
