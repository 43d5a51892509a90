#pragma once

#include <QWidget>

namespace orvanta {

class Appearance;
class GridButton;

/// The buttons along the panel's lower edge.
class PanelFooter final : public QWidget {
    Q_OBJECT

public:
    explicit PanelFooter(const Appearance& appearance, QWidget* parent = nullptr);

    void setPaused(bool paused);

Q_SIGNALS:
    void pauseRequested(); ///< or to go on
    void resetRequested();
    void quitRequested();

private:
    GridButton* pause_;
};

} // namespace orvanta
