#pragma once

namespace orvanta {

/// Whether it is known which window has the focus.
enum class WindowWatching {
    Waiting,         ///< connected, but no window manager is there that would tell
    Watching,        ///< a window manager answered as it should
    Unsupported,     ///< this desktop does not tell, or has not within the first seconds
    Ended,           ///< the display system went away, for good
    NeedsPermission, ///< the desktop would tell by something of ours that the person has to let in
    NeedsLogin,      ///< that is there, and tells from the next login on
    Incompatible,    ///< that is there, and this version of the desktop cannot tell by it
};

} // namespace orvanta
