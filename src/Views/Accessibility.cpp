#include "Views/Accessibility.h"

#include <QAbstractButton>
#include <QAccessibleWidget>
#include <QVariant>

namespace orvanta {

namespace {

constexpr const char* roleProperty = "orvantaAccessibleRole";
constexpr const char* valueProperty = "orvantaAccessibleValue";

class Interface final : public QAccessibleWidget {
public:
    Interface(QWidget* widget, QAccessible::Role role)
        : QAccessibleWidget(widget, role) {}

    QString text(QAccessible::Text kind) const override {
        QString value = object()->property(valueProperty).toString();
        // Not every reader asks for the value of what is no slider.
        if (kind == QAccessible::Value || (kind == QAccessible::Description && !value.isEmpty())) {
            return value;
        }
        return QAccessibleWidget::text(kind);
    }

    QAccessible::State state() const override {
        QAccessible::State state = QAccessibleWidget::state();
        if (const QAbstractButton* pressed = button()) {
            state.pressed = pressed->isDown();
            state.checkable = pressed->isCheckable();
            state.checked = pressed->isChecked();
        }
        state.modal = role() == QAccessible::Dialog;
        return state;
    }

    QStringList actionNames() const override {
        QStringList names = QAccessibleWidget::actionNames();
        if (button() != nullptr) {
            names.prepend(pressAction());
        }
        return names;
    }

    void doAction(const QString& name) override {
        if (QAbstractButton* pressed = button(); pressed != nullptr && name == pressAction()) {
            pressed->click();
        } else {
            QAccessibleWidget::doAction(name);
        }
    }

private:
    QAbstractButton* button() const { return qobject_cast<QAbstractButton*>(object()); }
};

QAccessibleInterface* makeInterface(const QString& /*className*/, QObject* object) {
    auto* const widget = qobject_cast<QWidget*>(object);
    const QVariant role = widget != nullptr ? widget->property(roleProperty) : QVariant();
    return role.isValid() ? new Interface(widget, static_cast<QAccessible::Role>(role.toInt()))
                          : nullptr;
}

} // namespace

void setAccessibleRole(QWidget& widget, QAccessible::Role role) {
    [[maybe_unused]] static const bool installed = [] {
        QAccessible::installFactory(makeInterface);
        return true;
    }();
    widget.setProperty(roleProperty, role);
}

void setAccessibleValue(QWidget& widget, const QString& value) {
    if (widget.property(valueProperty).toString() != value) {
        widget.setProperty(valueProperty, value);
        QAccessibleEvent event(&widget, QAccessible::DescriptionChanged);
        QAccessible::updateAccessibility(&event);
    }
}

} // namespace orvanta
