#pragma once

#include "Setup/Setup.h"

#include <QWidget>

namespace orvanta {

class Calendar;
class Tracker;

/// The settings, of which each change takes effect at once, in the controls of the desktop's style.
class SettingsView final : public QWidget {
    Q_OBJECT

public:
    /// In device-independent pixels: the tabs, and the margin around them.
    static constexpr QSize contentSize{564, 454};

    /// What is referred to outlives it.
    SettingsView(Tracker& tracker, const Setup::System& system, const Calendar& calendar,
                 QWidget* parent = nullptr);
};

} // namespace orvanta
