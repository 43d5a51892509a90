#pragma once

#include "Browsers/BrowserReading.h"

namespace orvanta {

/// The reading of a process that knows no browser's dialect: whichever is asked, that is the
/// answer.
class UnknownBrowsers final : public BrowserReading {
public:
    void read(const QString& bundleID, Completion completion) override;
};

} // namespace orvanta
