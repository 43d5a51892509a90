#include "Linux/Windows/X11MouseMonitor.h"

#include "Linux/Windows/X11Reply.h"

#include <QSocketNotifier>

#include <xcb/xinput.h>

#include <utility>

namespace orvanta {

namespace {

/// Of the wheel, which X counts as buttons.
constexpr uint32_t firstScroll = 4;
constexpr uint32_t lastScroll = 7;

} // namespace

std::unique_ptr<X11MouseMonitor> X11MouseMonitor::open(const QByteArray& display,
                                                       std::function<void()> pressed) {
    if (display.isEmpty()) {
        return nullptr; // libxcb would look for $DISPLAY itself.
    }
    Connection connection(xcb_connect(display.constData(), nullptr));
    xcb_connection_t* const c = connection.get();
    if (xcb_connection_has_error(c) != 0) {
        return nullptr;
    }
    const auto* extension = xcb_get_extension_data(c, &xcb_input_id);
    if (extension == nullptr || extension->present == 0) {
        return nullptr;
    }
    // From 2.1 on, raw events come also while another client has grabbed the mouse.
    const auto version =
        owned(xcb_input_xi_query_version_reply(c, xcb_input_xi_query_version(c, 2, 2), nullptr));
    if (!version || std::pair(version->major_version, version->minor_version) <
                        std::pair<uint16_t, uint16_t>(2, 1)) {
        return nullptr;
    }
    const struct {
        xcb_input_event_mask_t head{XCB_INPUT_DEVICE_ALL_MASTER, 1};
        uint32_t mask = XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS;
    } selection;
    for (auto screen = xcb_setup_roots_iterator(xcb_get_setup(c)); screen.rem > 0;
         xcb_screen_next(&screen)) {
        xcb_input_xi_select_events(c, screen.data->root, 1, &selection.head);
    }
    xcb_flush(c);
    return std::unique_ptr<X11MouseMonitor>(
        new X11MouseMonitor(std::move(connection), extension->major_opcode, std::move(pressed)));
}

X11MouseMonitor::X11MouseMonitor(Connection connection, std::uint8_t extension,
                                 std::function<void()> pressed)
    : connection_(std::move(connection))
    , extension_(extension)
    , pressed_(std::move(pressed))
    , readable_(std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_.get()),
                                                  QSocketNotifier::Read)) {
    QObject::connect(readable_.get(), &QSocketNotifier::activated, readable_.get(),
                     [this] { read(); });
}

X11MouseMonitor::~X11MouseMonitor() = default;

void X11MouseMonitor::read() {
    bool isPressed = false;
    while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
        const auto* generic = reinterpret_cast<const xcb_ge_generic_event_t*>(event.get());
        if (event->response_type == XCB_GE_GENERIC && generic->extension == extension_ &&
            generic->event_type == XCB_INPUT_RAW_BUTTON_PRESS) {
            const auto* press =
                reinterpret_cast<const xcb_input_raw_button_press_event_t*>(event.get());
            isPressed = isPressed || press->detail < firstScroll || press->detail > lastScroll;
        }
    }
    if (xcb_connection_has_error(connection_.get()) != 0) {
        readable_->setEnabled(false); // A closed socket stays readable.
    }
    if (isPressed) {
        const auto pressed = pressed_; // It may put an end to this.
        pressed();
    }
}

} // namespace orvanta
