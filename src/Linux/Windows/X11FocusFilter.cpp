#include "Linux/Windows/X11FocusFilter.h"

#include <QGuiApplication>

#include <xcb/xcb.h>

namespace orvanta {

X11FocusFilter::~X11FocusFilter() {
    if (qGuiApp != nullptr) {
        qGuiApp->removeNativeEventFilter(this);
    }
}

void X11FocusFilter::apply(std::uint32_t window) {
    window_ = window;
    qGuiApp->installNativeEventFilter(this); // Once, however often.
}

bool X11FocusFilter::nativeEventFilter(const QByteArray& eventType, void* message,
                                       qintptr* /*result*/) {
    if (eventType != "xcb_generic_event_t") {
        return false;
    }
    constexpr uint8_t sent = 0x80; // by another client
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    const uint8_t type = event->response_type & ~sent;
    return (type == XCB_FOCUS_IN || type == XCB_FOCUS_OUT) &&
           static_cast<const xcb_focus_in_event_t*>(message)->event == window_;
}

} // namespace orvanta
