#include "Linux/BrowserBridge/PermissionPrompt.h"

#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QLabel>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

#include <utility>

namespace orvanta {

namespace {

QLabel* makeWideLabel(QWidget* parent) {
    constexpr int width = 400;
    auto* label = new QLabel(parent);
    label->setFixedWidth(width);
    label->setTextFormat(Qt::PlainText); // A browser may be called anything.
    label->setWordWrap(true);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    return label;
}

} // namespace

PermissionPrompt::PermissionPrompt(const QString& browser, Actions actions)
    : browser_(browser)
    , actions_(std::move(actions))
    , text_(makeWideLabel(this))
    , detail_(makeWideLabel(this))
    , buttons_(new QDialogButtonBox(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(QStringLiteral("orvanta"));
    QFont bold = text_->font();
    bold.setBold(true);
    text_->setFont(bold);
    auto* layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize); // It grows with what there is to say.
    layout->addWidget(text_);
    layout->addWidget(detail_);
    layout->addWidget(buttons_);

    say(QStringLiteral("Identificar os sites abertos no %1?").arg(browser),
        QStringLiteral("O navegador dirá ao orvanta apenas o endereço do site à frente, como "
                       "exemplo.org: nunca a página, o que se digita ou janelas anônimas. Nada sai "
                       "deste computador."));
    connect(buttons_->addButton(QStringLiteral("Permitir"), QDialogButtonBox::AcceptRole),
            &QPushButton::clicked, this, &PermissionPrompt::conclude);
    connect(buttons_->addButton(QStringLiteral("Não permitir"), QDialogButtonBox::DestructiveRole),
            &QPushButton::clicked, this, [this] {
                actions_.refuse();
                close();
            });
}

void PermissionPrompt::conclude() {
    const Preparation preparation = actions_.agree();
    buttons_->clear();
    switch (preparation.next) {
    case Preparation::Next::Nothing:
        close();
        return;
    case Preparation::Next::Restart:
        say(QStringLiteral("Reinicie o %1 para concluir.").arg(browser_),
            QStringLiteral("A extensão do orvanta começa a valer quando o navegador é aberto de "
                           "novo."));
        break;
    case Preparation::Next::Confirm:
        say(QStringLiteral("Reinicie o %1 para concluir.").arg(browser_),
            QStringLiteral("Aberto de novo, o navegador pergunta no próprio menu se aceita a "
                           "extensão do orvanta."));
        break;
    case Preparation::Next::Unpacked:
        sayByHand(
            preparation.folder,
            QStringLiteral("Abra chrome://extensions, ative o modo do desenvolvedor e carregue "
                           "sem compactação esta pasta:\n%1"));
        break;
    case Preparation::Next::Temporary:
        sayByHand(preparation.folder,
                  QStringLiteral("Abra about:debugging, escolha “Este Firefox”, depois “Carregar "
                                 "extensão temporária” e o arquivo manifest.json desta pasta. Vale "
                                 "até o navegador ser fechado.\n%1"));
        break;
    case Preparation::Next::Failed:
        say(QStringLiteral("Não foi possível preparar o %1.").arg(browser_), preparation.problem);
        break;
    }
    QPushButton* ok = buttons_->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    connect(ok, &QPushButton::clicked, this, &QWidget::close);
    ok->setFocus();
}

void PermissionPrompt::sayByHand(const QString& folder, const QString& steps) {
    say(QStringLiteral("Falta carregar a extensão no %1.").arg(browser_), steps.arg(folder));
    connect(buttons_->addButton(QStringLiteral("Abrir a pasta"), QDialogButtonBox::ActionRole),
            &QPushButton::clicked, this,
            [folder] { QDesktopServices::openUrl(QUrl::fromLocalFile(folder)); });
}

void PermissionPrompt::say(const QString& text, const QString& detail) {
    text_->setText(text);
    detail_->setText(detail);
}

} // namespace orvanta
