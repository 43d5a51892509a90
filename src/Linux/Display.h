#pragma once

struct xcb_connection_t;

namespace orvanta {

/// Whether there is a display that windows can be shown on; Qt ends a process that asks in vain.
bool hasDisplay();

/// Keeps Qt from waking up at every property change of the X root window, of which each switch of
/// the window in front brings a handful. Qt then no longer hears of a change of the work area. Does
/// nothing where Qt's windows are not X11's. Needs a QGuiApplication.
void ignoreRootWindowProperties();

/// The connection of Qt's own windows; null where they are not X11's. Needs a QGuiApplication.
xcb_connection_t* qtX11Connection();

} // namespace orvanta
