#pragma once

#include "Platform/AppleEvent.h"

#include <chrono>
#include <functional>
#include <optional>
#include <set>

namespace orvanta {

/// Hands Apple events to other applications.
class AppleEventTransport {
public:
    /// Apple's `kAEWaitReply` and `kAENeverInteract`.
    static constexpr std::uint32_t waitForReply = 0x3;
    static constexpr std::uint32_t neverInteract = 0x10;

    using Duration = std::chrono::duration<double>;
    /// The reply; absent when the event could not be sent or no reply came in time.
    using Completion = std::function<void(const std::optional<AppleEvent>&)>;

    virtual ~AppleEventTransport() = default;
    AppleEventTransport(const AppleEventTransport&) = delete;
    AppleEventTransport& operator=(const AppleEventTransport&) = delete;

    /// Calls `completion` exactly once, at the latest after `timeout`; perhaps at once.
    virtual void send(const AppleEvent& event, std::uint32_t options, Duration timeout,
                      Completion completion) = 0;

protected:
    AppleEventTransport() = default;
};

/// What the person allowed.
class AutomationPermission {
public:
    static constexpr int permitted = 0;
    /// Apple's `errAEEventNotPermitted`: the person refused.
    static constexpr int refused = -1743;
    /// Apple's `errAEEventWouldRequireUserConsent`: the person has not decided yet.
    static constexpr int undecided = -1744;

    virtual ~AutomationPermission() = default;
    AutomationPermission(const AutomationPermission&) = delete;
    AutomationPermission& operator=(const AutomationPermission&) = delete;

    /// Whether such events may be sent to the process that `target` names. Where the person has not
    /// decided, and only if `askUser`, the person is asked; nobody waits for the decision.
    virtual int determine(const EventDescriptor& target, FourCharCode eventClass,
                          FourCharCode eventID, bool askUser) = 0;

protected:
    AutomationPermission() = default;
};

class ApplicationLauncher;
class RunningApplications;

/// All that it takes to ask other applications, and to be allowed to. What it gives lives as long
/// as it does.
class Automation {
public:
    virtual ~Automation() = default;
    Automation(const Automation&) = delete;
    Automation& operator=(const Automation&) = delete;

    virtual const RunningApplications& runningApplications() const = 0;
    virtual AppleEventTransport& transport() = 0;
    virtual AutomationPermission& permission() = 0;
    /// An application that it starts is a running one as soon as the launch has completed.
    virtual ApplicationLauncher& launcher() = 0;

    /// Sees to it that what was allowed once still works from where the program is now. Does I/O:
    /// not before the first seconds are over.
    virtual void renewPreparations() = 0;

    /// Browsers whose sites the person does not want identified: they tell nothing, whatever was
    /// allowed.
    virtual void setSilenced(std::set<QString> bundleIdentifiers) = 0;

protected:
    Automation() = default;
};

} // namespace orvanta
