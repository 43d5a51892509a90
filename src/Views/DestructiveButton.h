#pragma once

#include <QPushButton>

namespace orvanta {

/// Takes something away for good, and looks like it.
class DestructiveButton final : public QPushButton {
    Q_OBJECT

public:
    explicit DestructiveButton(const QString& text, QWidget* parent = nullptr);

protected:
    bool event(QEvent* event) override;
};

} // namespace orvanta
