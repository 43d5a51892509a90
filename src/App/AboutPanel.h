#pragma once

#include <QDialog>

namespace orvanta {

/// Name, version, and what Orvanta is built on under which licences. Deletes itself when closed.
class AboutPanel final : public QDialog {
    Q_OBJECT

public:
    explicit AboutPanel(QWidget* parent = nullptr);
};

} // namespace orvanta
