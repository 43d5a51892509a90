#pragma once

#include "Linux/BrowserBridge/BrowserConnection.h"
#include "Platform/Automation.h"
#include "Platform/MainLoop.h"
#include "Platform/NotificationCenter.h"

#include <QObject>

#include <limits>
#include <list>
#include <memory>
#include <vector>

namespace orvanta {

class BrowserBridge;
class Workspace;

/// Carries the one Apple event that browsers are asked with, the address of the front tab of window
/// 1, to those that are connected.
///
/// Window 1 of a browser is the one that had the focus last, over all its profiles. What a profile
/// told counts as long as it is newer than the browser's coming to the front and not older than a
/// minute; then it is asked.
class BrowserTransport final : public QObject, public AppleEventTransport {
    Q_OBJECT

public:
    struct Surroundings {
        Workspace& workspace;
        NotificationCenter& workspaceNotifications;
        MainLoop& mainLoop;
        BrowserConnection::Clock now;
        /// Whether a window of Orvanta's own has the keyboard, while the one behind it counts on.
        std::function<bool()> isOwnWindowOpen;
    };

    /// What is referred to outlives the transport.
    BrowserTransport(BrowserBridge& bridge, Surroundings surroundings);
    ~BrowserTransport() override;

    void send(const AppleEvent& event, std::uint32_t options, Duration timeout,
              Completion completion) override;

private:
    struct Request {
        qint64 process = 0;
        Completion completion;
        std::vector<const BrowserConnection*> asked;
        std::unique_ptr<MainLoopTimer> timeout;
        std::unique_ptr<MainLoopTimer> settling;
    };
    using Requests = std::list<Request>;

    void frontmostChanged();
    void tryAgain(qint64 process);
    /// Answers the request if that is possible now, or sees to it that it will be.
    void attempt(Requests::iterator request);
    /// What it said last, if that still stands; else null.
    const BrowserConnection::State* freshState(const BrowserConnection& connection) const;
    bool hasSettled(double changedAt) const;
    /// Answers that there is no address, once that has been so for long enough.
    void settle(Requests::iterator request, double changedAt);
    void finish(Requests::iterator request, const std::optional<AppleEvent>& reply);

    BrowserBridge& bridge_;
    Surroundings surroundings_;
    NotificationCenter::Token observer_;
    qint64 frontmostProcess_ = 0;
    double frontmostSince_ = 0;
    /// When the browser in front last was found to have no window that we may see in front. A
    /// window of ours that opens then covers a private one.
    double noWindowAt_ = -std::numeric_limits<double>::infinity();
    Requests requests_;
};

} // namespace orvanta
