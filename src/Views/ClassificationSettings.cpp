#include "Views/ClassificationSettings.h"

#include "Tracking/Tracker.h"
#include "Views/Caption.h"
#include "Views/ClassificationList.h"
#include "Views/ClassificationModel.h"
#include "Views/ClassificationSearch.h"

#include <QLineEdit>
#include <QVBoxLayout>

namespace orvanta {

ClassificationSettings::ClassificationSettings(Tracker& tracker, QWidget* parent)
    : QWidget(parent)
    , tracker_(tracker)
    , model_(new ClassificationModel(tracker, this)) {
    auto* const search = new ClassificationSearch(*model_, this);

    auto* const field = new QLineEdit;
    field->setPlaceholderText(QStringLiteral("Buscar app ou site"));
    field->setAccessibleName(field->placeholderText());
    field->setClearButtonEnabled(true);

    auto* const list = new ClassificationList;
    list->setModel(search);
    list->setAccessibleName(QStringLiteral("Classificações"));
    connect(field, &QLineEdit::textChanged, this, [search, list](const QString& text) {
        search->setText(text);
        list->scrollToTop();
    });
    connect(list, &ClassificationList::categoryChosen, this,
            [this, search](const QModelIndex& index, Category category) {
                tracker_.classify(model_->activity(search->mapToSource(index).row()), category);
            });

    auto* const column = new QVBoxLayout(this);
    column->addWidget(field);
    column->addWidget(list);
    column->addWidget(
        new Caption(QStringLiteral("Alterações também reclassificam o tempo já acumulado. "
                                   "Ignorados e pendentes não entram na proporção.")));
}

ClassificationSettings::~ClassificationSettings() = default;

void ClassificationSettings::showEvent(QShowEvent* event) {
    QWidget::showEvent(event);
    observation_ = std::make_unique<QObject>();
    connect(&tracker_, &Tracker::revisionChanged, observation_.get(),
            [this] { model_->refresh(); });
    model_->refresh();
}

void ClassificationSettings::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    observation_.reset();
}

} // namespace orvanta
