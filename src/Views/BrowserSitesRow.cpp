#include "Views/BrowserSitesRow.h"

#include "Views/Caption.h"
#include "Views/ElidedLabel.h"
#include "Views/Ink.h"
#include "Views/Symbols.h"
#include "Views/Text/SettingsText.h"

#include <QCheckBox>
#include <QFontInfo>
#include <QHBoxLayout>
#include <QPainter>
#include <QPushButton>

namespace orvanta {

namespace {

class Checkmark final : public QWidget {
public:
    Checkmark() {
        const int side = QFontInfo(font()).pixelSize();
        setFixedSize(side, side);
    }

protected:
    void paintEvent(QPaintEvent* /*event*/) override {
        QPainter painter(this);
        drawSymbol(painter, Symbol::checkmark, rect(), width() * 0.8, secondaryInk(palette()));
    }
};

QWidget* allowedLabel() {
    auto* const text = new Caption(QStringLiteral("Permitido"));
    text->setWordWrap(false);
    auto* const label = new QWidget;
    auto* const line = new QHBoxLayout(label);
    line->setContentsMargins({});
    line->setSpacing(4);
    line->addWidget(new Checkmark);
    line->addWidget(text);
    return label;
}

} // namespace

BrowserSitesRow::BrowserSitesRow(const Browser& browser, QWidget* parent)
    : QWidget(parent)
    , browser_(browser)
    , allow_(new QPushButton(QStringLiteral("Permitir")))
    , allowed_(allowedLabel())
    , settings_(new QPushButton(QStringLiteral("Abrir Ajustes do Sistema")))
    , switch_(new QCheckBox) {
    const QString title = sitesTitle(browser.name);
    switch_->setAccessibleName(title);
    connect(switch_, &QCheckBox::clicked, this, &BrowserSitesRow::sitesSwitched);
    for (QPushButton* const button : {allow_, settings_}) {
        button->setFont(captionFont(font()));
        button->setAutoDefault(false);
        button->setAccessibleDescription(title);
    }
    connect(allow_, &QPushButton::clicked, this, &BrowserSitesRow::permissionWanted);
    connect(settings_, &QPushButton::clicked, this, &BrowserSitesRow::settingsWanted);

    auto* const line = new QHBoxLayout(this);
    line->setContentsMargins({});
    line->addWidget(new ElidedLabel(title));
    line->addStretch();
    line->addWidget(allow_);
    line->addWidget(allowed_);
    line->addWidget(settings_);
    line->addWidget(switch_);
}

std::array<QWidget*, 3> BrowserSitesRow::controls() const {
    return {allow_, settings_, switch_};
}

void BrowserSitesRow::setState(bool identifiesSites, std::optional<Setup::State> permission) {
    const Setup::State state = permission.value_or(Setup::State::pending);
    switch_->setChecked(identifiesSites);
    allow_->setVisible(identifiesSites && state == Setup::State::pending);
    allowed_->setVisible(identifiesSites && state == Setup::State::done);
    settings_->setVisible(identifiesSites && state == Setup::State::needsSettings);
}

} // namespace orvanta
