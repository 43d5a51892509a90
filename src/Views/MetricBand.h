#pragma once

#include <QWidget>

#include <optional>

namespace orvanta {

class Appearance;
class Metric;

/// The shares of production and consumption, over a line that is divided by them.
class MetricBand final : public QWidget {
    Q_OBJECT

public:
    explicit MetricBand(const Appearance& appearance, QWidget* parent = nullptr);

    /// The share of production, from 0 to 1; absent when nothing is classified.
    void setRatio(std::optional<double> ratio);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const Appearance& appearance_;
    std::optional<double> ratio_;
    Metric* production_;
    Metric* consumption_;
};

} // namespace orvanta
