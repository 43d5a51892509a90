#pragma once

#include <QString>

namespace orvanta {

/// What has the person's attention.
struct Focus {
    /// From the frontmost probe: the bare bundle identifier. From the tracker: an activity key.
    QString key;

    /// What the person calls it: the application's name or the site's host.
    QString name;

    /// Whether the probe found a part of the desktop itself, which is never timed.
    bool isSystemComponent = false;

    friend bool operator==(const Focus&, const Focus&) = default;
};

} // namespace orvanta
