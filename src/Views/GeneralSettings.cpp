#include "Views/GeneralSettings.h"

#include "Platform/ApplicationLauncher.h"
#include "Platform/LoginItem.h"
#include "Tracking/Tracker.h"
#include "Views/BrowserSitesRow.h"
#include "Views/Caption.h"
#include "Views/DestructiveButton.h"
#include "Views/Text/SettingsText.h"

#include <QAccessible>
#include <QCheckBox>
#include <QFormLayout>
#include <QGroupBox>
#include <QGuiApplication>
#include <QMessageBox>
#include <QPointer>
#include <QVBoxLayout>
#include <QWindow>

#include <algorithm>
#include <iterator>
#include <optional>

namespace orvanta {

GeneralSettings::GeneralSettings(Tracker& tracker, const Setup::System& system,
                                 const Calendar& calendar, QWidget* parent)
    : QScrollArea(parent)
    , tracker_(tracker)
    , system_(system)
    , calendar_(calendar) {
    auto* const form = new QWidget;
    auto* const column = new QVBoxLayout(form);
    column->addWidget(monitoringSection());
    column->addWidget(generalSection());
    column->addWidget(historySection());
    column->addStretch();

    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    setWidgetResizable(true);
    setWidget(form);
    // The tab's own ground shows through.
    viewport()->setAutoFillBackground(false);
    form->setAutoFillBackground(false);
}

GeneralSettings::~GeneralSettings() = default;

QWidget* GeneralSettings::monitoringSection() {
    auto* const section = new QGroupBox(QStringLiteral("Monitoramento"));
    auto* const column = new QVBoxLayout(section);
    browsers_ = new QVBoxLayout;
    column->addLayout(browsers_);
    belowBrowsers_ = new Caption(QStringLiteral(
        "Somente a aba ativa do navegador em primeiro plano conta tempo. Abas em segundo plano "
        "não contam. O macOS pedirá permissão de Automação; apenas o domínio é armazenado. As "
        "sugestões podem ser corrigidas pelas setas do painel."));
    column->addWidget(belowBrowsers_);
    return section;
}

QWidget* GeneralSettings::generalSection() {
    loginSwitch_ = new QCheckBox(QStringLiteral("Iniciar ao entrar no macOS"));
    loginSwitch_->setChecked(system_.loginItem.status() == LoginItem::Status::enabled);
    connect(loginSwitch_, &QCheckBox::toggled, this, &GeneralSettings::applyLoginItem);
    loginProblem_ = new Caption;
    loginProblem_->hide();

    countStart_ = new QLabel;
    countStart_->setAlignment(Qt::AlignRight);
    auto* const start = new QFormLayout; // Which takes two lines where the font needs them.
    start->setRowWrapPolicy(QFormLayout::WrapLongRows);
    start->setFieldGrowthPolicy(QFormLayout::AllNonFixedFieldsGrow);
    start->addRow(QStringLiteral("Início da contagem"), countStart_);

    auto* const section = new QGroupBox(QStringLiteral("Geral"));
    auto* const column = new QVBoxLayout(section);
    column->addWidget(loginSwitch_);
    column->addWidget(loginProblem_);
    column->addWidget(
        new Caption(QStringLiteral("Leitura e vídeos continuam contando sem interação. O contador "
                                   "pausa ao bloquear ou suspender o Mac.")));
    column->addLayout(start);
    return section;
}

QWidget* GeneralSettings::historySection() {
    clearHistory_ = new DestructiveButton(QStringLiteral("Apagar histórico…"));
    clearHistory_->setAutoDefault(false);
    connect(clearHistory_, &QPushButton::clicked, this, &GeneralSettings::askToClearHistory);

    auto* const section = new QGroupBox(QStringLiteral("Histórico"));
    auto* const column = new QVBoxLayout(section);
    column->addWidget(
        new Caption(QStringLiteral("O tempo de cada dia fica guardado no Mac e aparece pelo botão "
                                   "de grade do painel. Zerar não apaga o histórico.")));
    column->addWidget(clearHistory_, 0, Qt::AlignLeft);
    return section;
}

void GeneralSettings::showEvent(QShowEvent* event) {
    QScrollArea::showEvent(event);
    observation_ = std::make_unique<QObject>();
    QObject* const seen = observation_.get();
    connect(&tracker_, &Tracker::revisionChanged, seen, [this] { refresh(); });
    connect(&tracker_, &Tracker::resetDateChanged, seen, [this] { refresh(); });
    connect(&tracker_, &Tracker::disabledBrowsersChanged, seen, [this] { refreshPermissions(); });
    connect(qGuiApp, &QGuiApplication::focusWindowChanged, seen, [this](const QWindow* window) {
        if (window != nullptr && (window->flags() & Qt::WindowType_Mask) != Qt::Popup) {
            refresh(); // The person may have travelled, too.
            refreshPermissions();
        }
    });
    refresh();
    refreshPermissions();
}

void GeneralSettings::hideEvent(QHideEvent* event) {
    QScrollArea::hideEvent(event);
    observation_.reset();
}

void GeneralSettings::refresh() {
    countStart_->setText(countStartText(tracker_.resetDate(), calendar_));
    clearHistory_->setEnabled(tracker_.historyDayCount() > 0);
}

void GeneralSettings::refreshPermissions() {
    showBrowsers(Browser::installed(system_.bundles));
    for (BrowserSitesRow* const row : rows_) {
        const QString& id = row->browser().id;
        row->setState(!tracker_.disabledBrowsers().contains(id),
                      Setup::automationState(id, false, system_));
    }
}

void GeneralSettings::showBrowsers(const std::vector<Browser>& browsers) {
    if (std::ranges::equal(rows_, browsers, {}, &BrowserSitesRow::browser)) {
        return; // The rows stay, and with them the keyboard's place.
    }
    for (BrowserSitesRow* const row : rows_) {
        row->hide();
        row->deleteLater(); // One of its controls may be what brought us here.
    }
    rows_.clear();
    for (const Browser& browser : browsers) {
        auto* const row = new BrowserSitesRow(browser);
        connect(row, &BrowserSitesRow::sitesSwitched, this,
                [this, id = browser.id](bool identifiesSites) {
                    tracker_.setSitesEnabled(id, identifiesSites);
                    refreshPermissions();
                });
        connect(row, &BrowserSitesRow::permissionWanted, this, [this, id = browser.id] {
            Setup::requestAutomation(
                id,
                [self = QPointer(this)] {
                    if (self) {
                        self->refreshPermissions();
                    }
                },
                system_);
        });
        connect(row, &BrowserSitesRow::settingsWanted, this,
                [this] { system_.launcher.open(Setup::automationSettings()); });
        browsers_->addWidget(row);
        row->stackUnder(belowBrowsers_); // Screen readers read in this order.
        row->show();
        rows_.push_back(row);
    }
    // New rows would come last for the keyboard.
    std::vector<QWidget*> order;
    for (const BrowserSitesRow* const row : rows_) {
        std::ranges::copy(row->controls(), std::back_inserter(order));
    }
    order.insert(order.end(), {loginSwitch_, clearHistory_});
    for (std::size_t i = 1; i < order.size(); ++i) {
        setTabOrder(order[i - 1], order[i]);
    }
}

void GeneralSettings::applyLoginItem(bool enabled) {
    LoginItem& item = system_.loginItem;
    std::optional<QString> problem = enabled ? item.registerItem() : item.unregisterItem();
    if (!problem && enabled && item.status() == LoginItem::Status::requiresApproval) {
        problem = QStringLiteral("Autorize o orvanta nos Itens de Início dos Ajustes do Sistema.");
    }
    loginProblem_->setText(problem.value_or(QString()));
    loginProblem_->setVisible(problem.has_value());
    if (problem) {
        QAccessibleEvent alert(loginProblem_, QAccessible::Alert);
        QAccessible::updateAccessibility(&alert);
    }
}

void GeneralSettings::askToClearHistory() {
    auto* const question =
        new QMessageBox(QMessageBox::Warning, QStringLiteral("orvanta"),
                        QStringLiteral("Apagar o histórico por dia?"), QMessageBox::NoButton, this);
    question->setAttribute(Qt::WA_DeleteOnClose);
    question->setInformativeText(
        QStringLiteral("Os dias registrados serão apagados. A sessão atual e as classificações "
                       "serão preservadas."));
    QPushButton* const cancel =
        question->addButton(QStringLiteral("Cancelar"), QMessageBox::RejectRole);
    const QAbstractButton* const erase =
        question->addButton(QStringLiteral("Apagar"), QMessageBox::DestructiveRole);
    question->setDefaultButton(cancel);
    question->setEscapeButton(cancel);
    connect(question, &QMessageBox::buttonClicked, this,
            [this, erase](const QAbstractButton* button) {
                if (button == erase) {
                    tracker_.clearHistory();
                }
            });
    question->open(); // Modal to the window of the settings only.
}

} // namespace orvanta
