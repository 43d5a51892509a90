#include "Linux/BrowserBridge/AutomationWindow.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace orvanta {

namespace {

using Decision = LinuxAutomationPermission::Decision;
using Missing = AutomationWindow::Missing;

constexpr int narrowest = 460;
constexpr int gap = 12;

QString statusText(const AutomationWindow::Row& row) {
    if (row.decision == Decision::Undecided) {
        return QStringLiteral("Ainda não decidido");
    }
    if (row.decision == Decision::Refused) {
        return QStringLiteral("Não permitido");
    }
    switch (row.missing) {
    case Missing::Extension:
        return QStringLiteral("Permitido · falta a extensão no navegador");
    case Missing::Start:
        return QStringLiteral("Permitido · abra o navegador");
    case Missing::Restart:
        return QStringLiteral("Permitido · reinicie o navegador");
    case Missing::Nothing:
        break;
    }
    return QStringLiteral("Permitido · conectado");
}

QLabel* makeLabel(QWidget* parent) {
    auto* label = new QLabel(parent);
    label->setTextFormat(Qt::PlainText); // A browser may be called anything.
    label->setWordWrap(true);
    return label;
}

} // namespace

class AutomationWindow::RowView final : public QWidget {
public:
    RowView(QString identifier, const Actions& actions, QWidget* parent)
        : QWidget(parent)
        , identifier_(std::move(identifier))
        , name_(makeLabel(this))
        , status_(makeLabel(this))
        , allow_(new QPushButton(this))
        , refuse_(new QPushButton(QStringLiteral("Não permitir"), this)) {
        QFont bold = name_->font();
        bold.setBold(true);
        name_->setFont(bold);
        auto* texts = new QVBoxLayout;
        texts->setSpacing(0);
        texts->addWidget(name_);
        texts->addWidget(status_);
        auto* layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addLayout(texts, 1);
        for (QPushButton* button : {allow_, refuse_}) {
            button->setAutoDefault(false);
            layout->addWidget(button);
        }
        // Not the row itself: it may go while its button is at work.
        connect(allow_, &QPushButton::clicked, parent,
                [&actions, which = identifier_] { actions.allow(which); });
        connect(refuse_, &QPushButton::clicked, parent,
                [&actions, which = identifier_] { actions.refuse(which); });
    }

    const QString& identifier() const { return identifier_; }

    void tell(const Row& row) {
        name_->setText(row.name);
        status_->setText(statusText(row));
        const bool isPermitted =
            row.decision == Decision::Agreed || row.decision == Decision::Allowed;
        allow_->setText(isPermitted ? QStringLiteral("Concluir…") : QStringLiteral("Permitir…"));
        setShown(*allow_, !isPermitted || row.missing != Missing::Nothing, *refuse_);
        setShown(*refuse_, row.decision != Decision::Refused, *allow_);
        // Read out of their row, buttons of the same name could not be told apart.
        for (QPushButton* button : {allow_, refuse_}) {
            button->setAccessibleName(button->text() + QStringLiteral(" — ") + row.name);
            button->setAccessibleDescription(status_->text());
        }
    }

private:
    /// The focus of a button that goes passes to its neighbour.
    static void setShown(QPushButton& button, bool isVisible, QPushButton& neighbour) {
        const bool hadFocus = button.window()->focusWidget() == &button;
        button.setVisible(isVisible);
        if (hadFocus && !isVisible) {
            neighbour.setVisible(true);
            neighbour.setFocus();
        }
    }

    QString identifier_;
    QLabel* name_;
    QLabel* status_;
    QPushButton* allow_;
    QPushButton* refuse_;
};

AutomationWindow::AutomationWindow(Actions actions)
    : actions_(std::move(actions))
    , list_(new QVBoxLayout) {
    setAttribute(Qt::WA_DeleteOnClose);
    setWindowTitle(QStringLiteral("Automação"));
    auto* text = makeLabel(this);
    text->setText(QStringLiteral("Estes navegadores podem dizer ao orvanta apenas o endereço do "
                                 "site à frente, se você permitir."));
    list_->setSpacing(gap);
    auto* layout = new QVBoxLayout(this);
    layout->setSpacing(gap);
    layout->addWidget(text);
    layout->addLayout(list_);
    layout->addStretch();
    setMinimumWidth(narrowest);
    refresh();
}

void AutomationWindow::refresh() {
    const std::vector<Row> rows = actions_.rows();
    if (!std::ranges::equal(rows, views_, {}, &Row::identifier, &RowView::identifier) ||
        list_->count() == 0) {
        while (QLayoutItem* item = list_->takeAt(0)) {
            item->widget()->hide();
            item->widget()->deleteLater();
            delete item;
        }
        views_.clear();
        for (const Row& row : rows) {
            views_.push_back(new RowView(row.identifier, actions_, this));
            list_->addWidget(views_.back());
            views_.back()->show();
        }
        if (rows.empty()) {
            auto* none = makeLabel(this);
            none->setText(QStringLiteral("Nenhum navegador compatível foi encontrado."));
            list_->addWidget(none);
            none->show();
        }
    }
    for (std::size_t i = 0; i < rows.size(); ++i) {
        views_[i]->tell(rows[i]);
    }
}

bool AutomationWindow::event(QEvent* event) {
    if (event->type() == QEvent::WindowActivate) {
        refresh();
    }
    return QDialog::event(event);
}

} // namespace orvanta
