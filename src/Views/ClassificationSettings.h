#pragma once

#include <QWidget>

#include <memory>

namespace orvanta {

class ClassificationModel;
class Tracker;

/// Every activity and its category, to be searched and changed. Follows the tracker while it is
/// seen.
class ClassificationSettings final : public QWidget {
    Q_OBJECT

public:
    /// `tracker` outlives it.
    explicit ClassificationSettings(Tracker& tracker, QWidget* parent = nullptr);
    ~ClassificationSettings() override;

protected:
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    Tracker& tracker_;
    ClassificationModel* model_;
    std::unique_ptr<QObject> observation_; ///< lives as long as this is seen
};

} // namespace orvanta
