#pragma once

#include <QLabel>

namespace orvanta {

/// A text on one line, cut short with an ellipsis where there is no room; its tooltip has it all
/// then.
class ElidedLabel final : public QLabel {
    Q_OBJECT

public:
    explicit ElidedLabel(const QString& text, QWidget* parent = nullptr);

    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    QString shownText() const;
};

} // namespace orvanta
