#pragma once

namespace orvanta {

/// How a browser is asked for the address of its active tab.
enum class BrowserDialect { safari, chromium };

} // namespace orvanta
