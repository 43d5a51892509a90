#pragma once

#include <QLabel>

namespace orvanta {

/// An explaining text: smaller and fainter than the others around it, over as many lines as it
/// takes.
class Caption final : public QLabel {
    Q_OBJECT

public:
    explicit Caption(const QString& text = {}, QWidget* parent = nullptr);

protected:
    bool event(QEvent* event) override;

private:
    void adopt();
};

} // namespace orvanta
