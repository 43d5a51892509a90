#pragma once

#include <QPoint>
#include <QString>

#include <functional>
#include <optional>
#include <vector>

namespace orvanta {

/// What the status item shows: an arrow and the two shares, for example "↑ 63/37". Made and
/// compared every second, so that it holds no text.
struct StatusTitle {
    /// How the person should take it at a glance.
    enum class Tone { secondary, production, consumption };

    QChar symbol; ///< ↑, ↓ or Ⅱ
    /// In whole percent; absent when nothing was counted that is either.
    std::optional<int> production = {};
    std::optional<int> consumption = {};
    Tone tone = Tone::secondary;

    QString text() const {
        return symbol + QLatin1Char(' ') + share(production) + QLatin1Char('/') +
               share(consumption);
    }

    static QString share(std::optional<int> percent) {
        return percent ? QString::number(*percent) : QStringLiteral("—");
    }

    friend bool operator==(const StatusTitle&, const StatusTitle&) = default;
};

/// One entry of the status item's menu.
struct StatusMenuItem {
    QString text; ///< empty for a separator
    std::function<void()> action;
    std::optional<bool> checked = {}; ///< present for an entry that can be checked
    /// The key that, together with Control, the entry is known by; absent for none.
    std::optional<QChar> keyEquivalent = {};
};

/// The application's place in the desktop's status area.
class StatusItem {
public:
    struct Handlers {
        /// A left click, at this place of the screen where the desktop tells one.
        std::function<void(std::optional<QPoint>)> activate;
        /// Gives the menu, asked anew each time it is about to be shown, and perhaps earlier.
        std::function<std::vector<StatusMenuItem>()> menu;
        /// A right click: the menu is about to be shown.
        std::function<void()> menuWillOpen = {};
        /// What the item says in words, also its accessible name; asked when the desktop wants to
        /// know.
        std::function<QString()> toolTip = {};
    };

    virtual ~StatusItem() = default;
    StatusItem(const StatusItem&) = delete;
    StatusItem& operator=(const StatusItem&) = delete;

    /// Whether the desktop shows the item now.
    virtual bool isShown() const = 0;

    virtual void setTitle(const StatusTitle& title) = 0;

    /// The words are other ones now. Costs next to nothing.
    virtual void toolTipChanged() = 0;

protected:
    StatusItem() = default;
};

} // namespace orvanta
