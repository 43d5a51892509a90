#pragma once

#include <QString>

#include <functional>
#include <optional>

namespace orvanta {

/// Asks a running browser which site its active tab shows.
class BrowserReading {
public:
    /// Exactly one of the two is present: the host, or one Portuguese sentence on why there is
    /// none.
    struct Answer {
        std::optional<QString> site;
        std::optional<QString> error;
    };
    using Completion = std::function<void(const Answer&)>;

    virtual ~BrowserReading();
    BrowserReading(const BrowserReading&) = delete;
    BrowserReading& operator=(const BrowserReading&) = delete;

    /// Returns at once; `completion` is called exactly once, later, on the main thread.
    virtual void read(const QString& bundleID, Completion completion) = 0;

protected:
    BrowserReading() = default;
};

} // namespace orvanta
