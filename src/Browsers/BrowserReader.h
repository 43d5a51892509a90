#pragma once

#include "Browsers/BrowserDialect.h"
#include "Browsers/BrowserReading.h"
#include "Platform/AppleEvent.h"

#include <QObject>
#include <QSet>

#include <deque>
#include <functional>
#include <optional>

namespace orvanta {

class AppleEventTransport;
class AutomationPermission;
class Bundles;
class RunningApplications;

/// Asks a browser for its active tab by one Apple event: the address of the front tab of window 1.
///
/// Reads are carried out one after the other, each begun by the main loop; none waits for a browser
/// while the main thread could do anything else.
class BrowserReader final : public QObject, public BrowserReading {
    Q_OBJECT

public:
    /// The host of an address; none for one without.
    using HostExtraction = std::function<std::optional<QString>(const QString& address)>;

    /// What is referred to outlives the reader.
    BrowserReader(const Bundles& bundles, const RunningApplications& running,
                  AppleEventTransport& transport, AutomationPermission& permission,
                  HostExtraction host);

    void read(const QString& bundleID, Completion completion) override;

    /// The event that asks this process.
    static AppleEvent request(BrowserDialect dialect, std::int32_t processID);

private:
    struct Read {
        QString bundleID;
        Completion completion;
    };
    void startNext();
    void ask(const QString& bundleID);
    void handleReply(const std::optional<AppleEvent>& reply);
    void fail(const QString& error) { finish({std::nullopt, error}); }
    void finish(const Answer& answer);

    const Bundles& bundles_;
    const RunningApplications& running_;
    AppleEventTransport& transport_;
    AutomationPermission& permission_;
    HostExtraction host_;

    std::deque<Read> queue_; // The first is being carried out.
    /// For which the person may have been asked; it happens once a run.
    QSet<QString> requestedPermission_;
};

} // namespace orvanta
