#pragma once

#include "Views/PanelSurroundings.h"

#include <QWidget>

namespace orvanta {

class MetricBand;
class PanelFooter;
class TextBand;

/// What was measured since the last reset, and what can be done about it.
class PanelView final : public QWidget {
    Q_OBJECT

public:
    explicit PanelView(const PanelSurroundings& surroundings, QWidget* parent = nullptr);

private:
    void refresh();

    PanelSurroundings surroundings_;
    MetricBand* metrics_;
    TextBand* title_;
    PanelFooter* footer_;
};

} // namespace orvanta
