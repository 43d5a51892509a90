#pragma once

#include "Browsers/BrowserDialect.h"
#include "Browsers/BrowserReading.h"

#include <deque>
#include <optional>
#include <set>

namespace orvanta {

/// Browsers that answer when the test says so.
class FakeBrowsers final : public BrowserReading {
public:
    struct Read {
        QString bundleID;
        Completion completion;
    };
    std::set<QString> known;
    std::deque<Read> reads;

    std::optional<BrowserDialect> dialect(const QString& bundleID) const {
        return known.contains(bundleID) ? std::optional(BrowserDialect::chromium) : std::nullopt;
    }
    void read(const QString& bundleID, Completion completion) override {
        reads.push_back({bundleID, std::move(completion)});
    }

    /// Answer the oldest outstanding read.
    void answer(const QString& site) { finish({site, std::nullopt}); }
    void fail(const QString& error) { finish({std::nullopt, error}); }

private:
    void finish(const Answer& answer) {
        const Completion completion = std::move(reads.front().completion);
        reads.pop_front();
        completion(answer);
    }
};

} // namespace orvanta
