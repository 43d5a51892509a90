#pragma once

namespace orvanta {

// Who the extension is, as browser/extension/manifest.json has it.

/// Chromium's: the first half of the SHA-256 of the manifest's key, with a to p for the digits.
inline constexpr char extensionChromiumId[] = "odbokjgdmdbheojmnkbkjhabohflpkpk";
inline constexpr char extensionGeckoId[] = "orvanta@brindlework.com";
inline constexpr char extensionVersion[] = "1.0";

/// The name by which the extension asks its browser for the host.
inline constexpr char nativeHostName[] = "com.brindlework.orvanta";

} // namespace orvanta
