#pragma once

#include "Views/PanelSurroundings.h"

#include <QWidget>

namespace orvanta {

class Setup;

/// All that the popover shows: the setup until it is finished, then the panel. It follows what it
/// shows as long as it exists, and costs nothing when it does not.
class PanelRoot final : public QWidget {
    Q_OBJECT

public:
    /// `setup` outlives it.
    PanelRoot(Setup& setup, PanelSurroundings surroundings, QWidget* parent = nullptr);

protected:
    void paintEvent(QPaintEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    bool focusNextPrevChild(bool next) override;

private:
    void chooseView();

    Setup& setup_;
    PanelSurroundings surroundings_;
    QWidget* view_ = nullptr;
    bool showsPanel_ = false;
};

} // namespace orvanta
