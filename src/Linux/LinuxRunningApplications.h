#pragma once

#include "Linux/Applications/ApplicationIdentity.h"
#include "Platform/NotificationCenter.h"
#include "Platform/RunningApplications.h"

#include <functional>
#include <map>
#include <vector>

namespace orvanta {

class Workspace;

/// The processes of which a window was in front or a browser is connected, and those that were
/// started here.
class LinuxRunningApplications final : public RunningApplications {
public:
    /// The processes of the browsers that are connected now.
    using Connected = std::function<std::vector<qint64>()>;

    /// What is referred to outlives this.
    LinuxRunningApplications(const Workspace& workspace, NotificationCenter& workspaceNotifications,
                             ApplicationIdentity identity, Connected connected);
    ~LinuxRunningApplications() override;

    std::vector<RunningInstance> instances(const QString& bundleIdentifier) const override;

    /// This process of the application has just been started.
    void add(qint64 process, const QString& bundleIdentifier);

    /// The application of a process; empty when nothing tells it.
    QString bundleIdentifier(qint64 process) const;

private:
    void frontmostChanged();

    const Workspace& workspace_;
    NotificationCenter& notifications_;
    NotificationCenter::Token observer_;
    mutable ApplicationIdentity identity_;
    Connected connected_;
    /// By process; what its window said precedes what its program is called.
    mutable std::map<qint64, QString> known_;
};

} // namespace orvanta
