#pragma once

#include <QRect>

#include <vector>

struct xcb_connection_t;

namespace orvanta {

/// What the panels of an X11 desktop leave of each of these monitors, in its pixels (Extended
/// Window Manager Hints 1.5: `_NET_WORKAREA` where there is one monitor; as that is one rectangle
/// for all of them, else the struts of the windows). Never empty: a monitor that nobody leaves
/// anything of is all there.
std::vector<QRect> x11WorkAreas(xcb_connection_t* connection, const std::vector<QRect>& monitors);

/// Has the window manager bring a window to the front, as a pager does: it does not ask whether the
/// person used the window last.
void activateX11Window(xcb_connection_t* connection, unsigned window);

} // namespace orvanta
