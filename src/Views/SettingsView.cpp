#include "Views/SettingsView.h"

#include "Views/ClassificationSettings.h"
#include "Views/GeneralSettings.h"
#include "Views/SettingsIcons.h"

#include <QTabWidget>
#include <QVBoxLayout>

namespace orvanta {

SettingsView::SettingsView(Tracker& tracker, const Setup::System& system, const Calendar& calendar,
                           QWidget* parent)
    : QWidget(parent) {
    setLayoutDirection(Qt::LeftToRight); // As its texts.
    setFixedSize(contentSize);

    auto* const tabs = new QTabWidget;
    tabs->setIconSize(QSize(1, 1) * tabs->fontMetrics().height());
    tabs->addTab(new GeneralSettings(tracker, system, calendar), gearIcon(),
                 QStringLiteral("Geral"));
    tabs->addTab(new ClassificationSettings(tracker), tagIcon(), QStringLiteral("Classificações"));

    constexpr int margin = 12;
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(margin, margin, margin, margin);
    column->addWidget(tabs);
}

} // namespace orvanta
