#include "Linux/LinuxWorkspace.h"

#include "Linux/Applications/SystemComponents.h"

#include <utility>

namespace orvanta {

LinuxWorkspace::LinuxWorkspace(WindowWatcher& watcher, DesktopEntries& entries,
                               NotificationCenter& notifications, qint64 ownProcess,
                               QString ownBundleIdentifier)
    : watcher_(watcher)
    , entries_(entries)
    , notifications_(notifications)
    , ownBundleIdentifier_(std::move(ownBundleIdentifier))
    , identity_(entries, ownProcess, ownBundleIdentifier_) {
    connect(&watcher, &WindowWatcher::activeWindowChanged, this, [this] { activeWindowChanged(); });
}

const RunningApplication* LinuxWorkspace::frontmostApplication() const {
    if (!identified_) {
        frontmost_ = identify();
        identified_ = true;
    }
    return frontmost_ ? &*frontmost_ : nullptr;
}

std::optional<QString> LinuxWorkspace::installLocation(const QString& bundleIdentifier) const {
    const auto entry = entries_.withId(bundleIdentifier);
    return entry ? std::optional(entry->path) : std::nullopt;
}

bool LinuxWorkspace::isSystemComponent(const QString& bundleIdentifier) const {
    if (lastComponent_.first != bundleIdentifier) {
        lastComponent_ = {bundleIdentifier, isLinuxSystemComponent(bundleIdentifier)};
    }
    return lastComponent_.second;
}

std::optional<RunningApplication> LinuxWorkspace::identify() const {
    const auto& window = watcher_.activeWindow();
    return window ? identity_.identify(*window) : std::nullopt;
}

void LinuxWorkspace::activeWindowChanged() {
    const auto previous = std::exchange(frontmost_, identify());
    const bool isSame =
        previous.has_value() == frontmost_.has_value() &&
        (!previous || (previous->bundleIdentifier == frontmost_->bundleIdentifier &&
                       previous->processIdentifier == frontmost_->processIdentifier));
    if (!std::exchange(identified_, true) || !isSame) {
        notifications_.post(Notification::DidActivateApplication);
    }
}

} // namespace orvanta
