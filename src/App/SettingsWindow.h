#pragma once

#include <QMainWindow>

namespace orvanta {

/// The frame of the settings: a window that is as large as they are, with a menu bar above them.
class SettingsWindow final : public QMainWindow {
    Q_OBJECT

public:
    /// Takes the content over, whose size is fixed.
    explicit SettingsWindow(QWidget* content);

    /// In the middle of this area; where that is too small, with the title bar inside.
    void centre(const QRect& area);

Q_SIGNALS:
    void willClose();

protected:
    void closeEvent(QCloseEvent* event) override;
};

} // namespace orvanta
