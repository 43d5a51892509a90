#pragma once

#include "Platform/Automation.h"

#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>

namespace orvanta {

class BrowserBridge;

/// What the person decided, browser by browser, and where it is kept.
///
/// A browser is allowed once the person agreed and it has been connected: only then is it known
/// that what was agreed to works. A connection that drops changes nothing.
class LinuxAutomationPermission final : public QObject, public AutomationPermission {
    Q_OBJECT

public:
    enum class Decision { Undecided, Agreed, Allowed, Refused };

    struct Surroundings {
        /// Sorted lists of bundle identifiers under "allowed", "agreed" and "refused".
        std::function<QStringList(const QString& key)> load;
        std::function<void(const QString& key, const QStringList& identifiers)> store;
        /// Shows the question, or what is left to do of a browser that was agreed to; whoever shows
        /// it answers by `agree`, `refuse` or not at all.
        std::function<void(const QString& bundleIdentifier)> ask;
        /// The application of a process; empty when unknown.
        std::function<QString(qint64 process)> bundleIdentifier;
    };

    /// The bridge outlives this.
    LinuxAutomationPermission(BrowserBridge& bridge, Surroundings surroundings);

    int determine(const EventDescriptor& target, FourCharCode eventClass, FourCharCode eventID,
                  bool askUser) override;

    Decision decision(const QString& bundleIdentifier) const;
    bool isConnected(const QString& bundleIdentifier) const;

    /// What is allowed already stays so.
    void agree(const QString& bundleIdentifier);
    void refuse(const QString& bundleIdentifier);

Q_SIGNALS:
    void changed(const QString& bundleIdentifier);

private:
    void connected(qint64 process);
    void decide(const QString& bundleIdentifier, Decision decision);

    BrowserBridge& bridge_;
    Surroundings surroundings_;
};

} // namespace orvanta
