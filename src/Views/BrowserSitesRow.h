#pragma once

#include "Browsers/Browser.h"
#include "Setup/Setup.h"

#include <QWidget>

#include <array>
#include <optional>

QT_BEGIN_NAMESPACE
class QCheckBox;
class QPushButton;
QT_END_NAMESPACE

namespace orvanta {

/// Whether a browser's sites are identified, and what the person may still have to allow for it.
class BrowserSitesRow final : public QWidget {
    Q_OBJECT

public:
    explicit BrowserSitesRow(const Browser& browser, QWidget* parent = nullptr);

    const Browser& browser() const { return browser_; }

    /// `permission` is absent for a browser that does not run.
    void setState(bool identifiesSites, std::optional<Setup::State> permission);

    /// What the keyboard reaches, as it stands.
    std::array<QWidget*, 3> controls() const;

Q_SIGNALS:
    void sitesSwitched(bool identifiesSites);
    void permissionWanted();
    void settingsWanted();

private:
    Browser browser_;
    QPushButton* allow_;
    QWidget* allowed_;
    QPushButton* settings_;
    QCheckBox* switch_;
};

} // namespace orvanta
