#pragma once

namespace orvanta {

// Who the extension is, as browser/pack.py makes it.

/// Chromium's: the first half of the SHA-256 of the public key, with a to p for the digits.
inline constexpr char extensionChromiumId[] = ORVANTA_EXTENSION_ID;
inline constexpr char extensionGeckoId[] = "orvanta@brindlework.com";
/// Chromium keeps an extension that was installed from outside until this grows.
inline constexpr char extensionVersion[] = ORVANTA_VERSION;

/// The name by which the extension asks its browser for the host.
inline constexpr char nativeHostName[] = "com.brindlework.orvanta";

} // namespace orvanta
