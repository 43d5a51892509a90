#include "Linux/Display.h"

#include <QGuiApplication>
#include <QtGlobal>

#include <xcb/xcb.h>

#include <cstdlib>

namespace orvanta {

bool hasDisplay() {
    if (!qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
        return true; // To ask the compositor costs some of them more than half a second.
    }
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool connected = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    return connected;
}

xcb_connection_t* qtX11Connection() {
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 != nullptr ? x11->connection() : nullptr;
}

void ignoreRootWindowProperties() {
    xcb_connection_t* connection = qtX11Connection();
    if (connection == nullptr) {
        return;
    }
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(connection)); screen.rem > 0;
         xcb_screen_next(&screen)) {
        const xcb_window_t root = screen.data->root;
        auto* attributes = xcb_get_window_attributes_reply(
            connection, xcb_get_window_attributes(connection, root), nullptr);
        if (attributes != nullptr) {
            const uint32_t events =
                attributes->your_event_mask & ~uint32_t{XCB_EVENT_MASK_PROPERTY_CHANGE};
            xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &events);
            std::free(attributes);
        }
    }
    xcb_flush(connection);
}

} // namespace orvanta
