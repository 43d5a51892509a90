#pragma once

#include <QString>

#include <vector>

namespace orvanta {

/// One process of an application.
struct RunningInstance {
    qint64 processIdentifier = 0;
    bool isTerminated = false;

    friend bool operator==(const RunningInstance&, const RunningInstance&) = default;
};

/// The applications that run. Asking costs no round trip to another process.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;
    RunningApplications(const RunningApplications&) = delete;
    RunningApplications& operator=(const RunningApplications&) = delete;

    /// In the desktop's order, the one in front first.
    virtual std::vector<RunningInstance> instances(const QString& bundleIdentifier) const = 0;

protected:
    RunningApplications() = default;
};

} // namespace orvanta
