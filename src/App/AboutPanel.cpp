#include "App/AboutPanel.h"

#include "App/ApplicationIcon.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <utility>

namespace orvanta {

AboutPanel::AboutPanel(QWidget* parent)
    : QDialog(parent) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Sobre o orvanta"));
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    auto* icon = new QLabel(this);
    constexpr int edge = 64;
    icon->setPixmap(applicationIcon().pixmap(QSize(edge, edge), devicePixelRatioF()));
    icon->setAlignment(Qt::AlignCenter);
    layout->addWidget(icon);
    auto* name = new QLabel(QStringLiteral("orvanta"), this);
    QFont large = name->font();
    large.setPointSizeF(large.pointSizeF() * 1.6);
    large.setBold(true);
    name->setFont(large);
    name->setAlignment(Qt::AlignCenter);
    layout->addWidget(name);
    auto* version =
        new QLabel(QStringLiteral("Versão ") + QApplication::applicationVersion(), this);
    version->setAlignment(Qt::AlignCenter);
    version->setTextInteractionFlags(Qt::TextSelectableByMouse);
    layout->addWidget(version);
    layout->addSpacing(12);

    layout->addWidget(new QLabel(QStringLiteral("Feito com estes programas livres:"), this));
    auto* licences = new QFormLayout;
    const std::pair<QString, QString> rows[]{
        {QStringLiteral("Qt ") + QString::fromLatin1(qVersion()), QStringLiteral("LGPL 3")},
        {QStringLiteral("SQLite"), QStringLiteral("domínio público")},
        {QStringLiteral("libplist"), QStringLiteral("LGPL 2.1 ou posterior")},
        {QStringLiteral("libxcb"), QStringLiteral("MIT (X11)")},
        {QStringLiteral("GLib"), QStringLiteral("LGPL 2.1 ou posterior")},
    };
    for (const auto& [library, licence] : rows) {
        licences->addRow(library, new QLabel(licence, this));
    }
    layout->addLayout(licences);

    auto* buttons = new QDialogButtonBox(this);
    connect(buttons->addButton(QStringLiteral("Fechar"), QDialogButtonBox::RejectRole),
            &QPushButton::clicked, this, &QDialog::close);
    layout->addWidget(buttons);
}

} // namespace orvanta
