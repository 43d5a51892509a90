#pragma once

#include "Model/Category.h"
#include "Views/Text/Listing.h"

#include <QScrollArea>

#include <optional>
#include <vector>

namespace orvanta {

class Activity;
class ActivityRow;
class Appearance;
class TextBlock;

/// A listing of activities that scrolls. However many there are, only as many rows exist as can be
/// seen, and one beyond each edge for the keyboard to go to.
class ActivityRows final : public QScrollArea {
    Q_OBJECT

public:
    /// `listing` is one of the two that have rows.
    ActivityRows(const Appearance& appearance, Listing listing, QWidget* parent = nullptr);

    /// The activities outlive the list. `timedKey` is of the one that counts right now, if any.
    void setActivities(const std::vector<const Activity*>& activities,
                       const std::optional<QString>& timedKey);
    int count() const { return static_cast<int>(activities_.size()); }
    /// Stands there when there are none.
    void setEmptyText(const QString& text);

    /// The row that shows an activity now; null when it is out of sight.
    ActivityRow* rowOf(const Activity& activity) const;

Q_SIGNALS:
    void stopRequested(const orvanta::Activity* activity);
    void classificationRequested(const orvanta::Activity* activity, orvanta::Category category);
    void resumeRequested(const orvanta::Activity* activity);

protected:
    void scrollContentsBy(int dx, int dy) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    /// A control of a row that has the keyboard.
    struct Keyboard {
        const Activity* activity;
        int index;
        std::size_t control;
    };

    ActivityRow* rowAt(int index) const {
        return rows_[static_cast<std::size_t>(index) % rows_.size()];
    }
    std::optional<Keyboard> keyboard() const;
    void showRows();
    /// The pointer is over one row at most, whatever comes and goes under it.
    void setHovered(const ActivityRow* hovered);
    void giveKeyboard(int index, std::size_t control);
    void keepKeyboard(const Keyboard& before, bool isScrolling);

    QWidget* canvas_;
    TextBlock* empty_;
    std::vector<const Activity*> activities_;
    std::optional<QString> timedKey_;
    std::vector<ActivityRow*> rows_; ///< by index modulo their number
};

} // namespace orvanta
