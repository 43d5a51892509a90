#include "Linux/LinuxRunningApplications.h"

#include "Platform/Workspace.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

namespace orvanta {

namespace {

bool isGone(qint64 process) {
    return ::kill(static_cast<pid_t>(process), 0) != 0 && errno == ESRCH;
}

} // namespace

LinuxRunningApplications::LinuxRunningApplications(const Workspace& workspace,
                                                   NotificationCenter& workspaceNotifications,
                                                   ApplicationIdentity identity,
                                                   Connected connected)
    : workspace_(workspace)
    , notifications_(workspaceNotifications)
    , observer_(workspaceNotifications.addObserver(Notification::DidActivateApplication,
                                                   [this] { frontmostChanged(); }))
    , identity_(std::move(identity))
    , connected_(std::move(connected)) {
    frontmostChanged();
}

LinuxRunningApplications::~LinuxRunningApplications() {
    notifications_.removeObserver(observer_);
}

void LinuxRunningApplications::frontmostChanged() {
    // A process that has gone leaves its number to another.
    std::erase_if(known_, [](const auto& known) { return isGone(known.first); });
    const RunningApplication* front = workspace_.frontmostApplication();
    if (front && front->processIdentifier) {
        known_[*front->processIdentifier] = front->bundleIdentifier;
    }
}

void LinuxRunningApplications::add(qint64 process, const QString& bundleIdentifier) {
    known_[process] = bundleIdentifier;
}

QString LinuxRunningApplications::bundleIdentifier(qint64 process) const {
    const auto found = known_.find(process);
    if (found != known_.end()) {
        return found->second;
    }
    Window window;
    window.processIdentifier = process;
    const auto application = identity_.identify(window);
    QString identifier = application ? application->bundleIdentifier : QString();
    known_.emplace(process, identifier);
    return identifier;
}

std::vector<RunningInstance> LinuxRunningApplications::instances(const QString& identifier) const {
    std::vector<RunningInstance> result;
    const RunningApplication* front = workspace_.frontmostApplication();
    if (front && front->bundleIdentifier == identifier && front->processIdentifier) {
        result.push_back({*front->processIdentifier, isGone(*front->processIdentifier)});
    }
    for (const qint64 process : connected_()) {
        bundleIdentifier(process); // From now on it is known.
    }
    for (const auto& [process, known] : known_) {
        if (known == identifier && !isGone(process) &&
            (result.empty() || result.front().processIdentifier != process)) {
            result.push_back({process, false});
        }
    }
    return result;
}

} // namespace orvanta
