#pragma once

#include "Browsers/Browser.h"
#include "Setup/Setup.h"

#include <QScrollArea>

#include <memory>
#include <vector>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QLabel;
class QVBoxLayout;
QT_END_NAMESPACE

namespace orvanta {

class BrowserSitesRow;
class Calendar;
class Caption;
class DestructiveButton;
class Tracker;

/// The browsers, starting at login, and what is kept of earlier days.
///
/// While it is seen it follows the tracker, and looks at the permissions again whenever a window of
/// the application becomes active: the person may come from giving one.
class GeneralSettings final : public QScrollArea {
    Q_OBJECT

public:
    /// What is referred to outlives it.
    GeneralSettings(Tracker& tracker, const Setup::System& system, const Calendar& calendar,
                    QWidget* parent = nullptr);
    ~GeneralSettings() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();
    void refreshPermissions();
    void showBrowsers(const std::vector<Browser>& browsers);
    void applyLoginItem(bool enabled);
    void askToClearHistory();

    QWidget* monitoringSection();
    QWidget* generalSection();
    QWidget* historySection();

    Tracker& tracker_;
    Setup::System system_;
    const Calendar& calendar_;
    QVBoxLayout* browsers_ = nullptr;
    Caption* belowBrowsers_ = nullptr;
    std::vector<BrowserSitesRow*> rows_;
    QCheckBox* loginSwitch_ = nullptr;
    Caption* loginProblem_ = nullptr;
    QLabel* countStart_ = nullptr;
    DestructiveButton* clearHistory_ = nullptr;
    std::unique_ptr<QObject> observation_; ///< lives as long as this is seen
};

} // namespace orvanta
