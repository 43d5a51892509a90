#include "Linux/Display.h"

#include <QtGlobal>

#include <xcb/xcb.h>

namespace orvanta {

bool hasDisplay() {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return true;
    }
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool connected = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return connected;
}

} // namespace orvanta
