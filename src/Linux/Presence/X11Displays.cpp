#include "Linux/Presence/X11Displays.h"

#include "Linux/Windows/X11Reply.h"

#include <sys/uio.h>
#include <xcb/dpms.h>
#include <xcb/screensaver.h>
#include <xcb/xcb.h>
#include <xcb/xcbext.h>

#include <utility>

namespace orvanta {

namespace {

/// DPMSSelectInput of DPMS 1.2, which this libxcb does not know yet. False where it is refused.
bool selectDpmsEvents(xcb_connection_t* connection) {
    constexpr uint8_t selectInput = 8;
    constexpr uint32_t infoNotifyMask = 1;
    struct {
        uint8_t majorOpcode = 0; // Filled in by libxcb, as the length is.
        uint8_t minorOpcode = 0;
        uint16_t length = 0;
        uint32_t eventMask = infoNotifyMask;
    } request;
    // libxcb writes into the two places before the first part.
    iovec parts[3] = {};
    parts[2] = {&request, sizeof request};
    const xcb_protocol_request_t protocol{1, &xcb_dpms_id, selectInput, 1};
    const xcb_void_cookie_t cookie{
        xcb_send_request(connection, XCB_REQUEST_CHECKED, parts + 2, &protocol)};
    return !owned(xcb_request_check(connection, cookie));
}

} // namespace

void X11Displays::Disconnect::operator()(xcb_connection_t* connection) const {
    xcb_disconnect(connection);
}

X11Displays::X11Displays(const QByteArray& display, MainLoop& mainLoop)
    : mainLoop_(mainLoop) {
    if (!connectTo(display)) {
        return;
    }
    again_.setSingleShot(true);
    connect(&again_, &QTimer::timeout, this, &X11Displays::process);
    readable_ = std::make_unique<ReadableNotifier>(xcb_get_file_descriptor(connection_.get()));
    connect(readable_.get(), &ReadableNotifier::activated, this, &X11Displays::process);
    findSaver();
    findDpms();
    readState();
    settle();
}

X11Displays::~X11Displays() = default;

bool X11Displays::connectTo(const QByteArray& display) {
    int screenNumber = 0;
    connection_.reset(xcb_connect(display.constData(), &screenNumber));
    xcb_connection_t* const c = connection_.get();
    if (xcb_connection_has_error(c) != 0) {
        return false;
    }
    auto screen = xcb_setup_roots_iterator(xcb_get_setup(c));
    for (; screenNumber > 0 && screen.rem > 1; --screenNumber) {
        xcb_screen_next(&screen);
    }
    root_ = screen.data->root;
    xcb_prefetch_extension_data(c, &xcb_screensaver_id);
    xcb_prefetch_extension_data(c, &xcb_dpms_id);
    return true;
}

void X11Displays::findSaver() {
    xcb_connection_t* const c = connection_.get();
    const auto* const extension = xcb_get_extension_data(c, &xcb_screensaver_id);
    hasSaver_ = extension != nullptr && extension->present != 0;
    if (hasSaver_) {
        saverEvent_ = static_cast<uint8_t>(extension->first_event + XCB_SCREENSAVER_NOTIFY);
        xcb_screensaver_select_input(c, root_, XCB_SCREENSAVER_EVENT_NOTIFY_MASK);
    }
}

void X11Displays::findDpms() {
    xcb_connection_t* const c = connection_.get();
    const auto* const extension = xcb_get_extension_data(c, &xcb_dpms_id);
    if (extension == nullptr || extension->present == 0) {
        return;
    }
    dpmsOpcode_ = extension->major_opcode;
    const auto capable = xcb_dpms_capable(c);
    const auto version =
        owned(xcb_dpms_get_version_reply(c, xcb_dpms_get_version(c, 1, 2), nullptr));
    const auto able = owned(xcb_dpms_capable_reply(c, capable, nullptr));
    if (!version || !able || able->capable == 0) {
        return;
    }
    hasDpms_ = true;
    const std::pair<uint16_t, uint16_t> number(version->server_major_version,
                                               version->server_minor_version);
    if (number < std::pair<uint16_t, uint16_t>(1, 2) || !selectDpmsEvents(c)) {
        poll_ = mainLoop_.every(pollInterval, pollInterval / 2, [this] {
            read();
            settle();
        });
    }
}

void X11Displays::process() {
    takeEvents();
    if (moved_) {
        read();
    }
    settle();
}

void X11Displays::takeEvents() {
    constexpr unsigned sentByClient = 0x80;
    while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
        const unsigned type = event->response_type;
        if (type == XCB_GE_GENERIC) {
            // Its second byte is the extension's opcode.
            moved_ |= hasDpms_ && event->pad0 == dpmsOpcode_;
        } else if ((type & sentByClient) == 0) {
            moved_ |= hasSaver_ && type == saverEvent_;
        }
    }
}

void X11Displays::read() {
    const bool before = areOff();
    readState();
    if (areOff() != before) {
        Q_EMIT changed();
    }
}

/// One round trip for both. What is not answered is taken for on.
void X11Displays::readState() {
    moved_ = false;
    xcb_connection_t* const c = connection_.get();
    xcb_screensaver_query_info_cookie_t saver{};
    xcb_dpms_info_cookie_t dpms{};
    if (hasSaver_) {
        saver = xcb_screensaver_query_info(c, root_);
    }
    if (hasDpms_) {
        dpms = xcb_dpms_info(c);
    }
    state_ = {};
    if (hasSaver_) {
        const auto info = owned(xcb_screensaver_query_info_reply(c, saver, nullptr));
        state_.saverOn = info && info->state == XCB_SCREENSAVER_STATE_ON;
    }
    if (hasDpms_) {
        if (const auto info = owned(xcb_dpms_info_reply(c, dpms, nullptr))) {
            state_.dpmsEnabled = info->state != 0;
            state_.dpmsLevel = info->power_level;
        }
    }
}

/// Reading a reply can bring events along, which the socket would not announce any more. They are
/// served from the main loop, so that a client which floods us starves nobody.
void X11Displays::settle() {
    xcb_flush(connection_.get());
    takeEvents();
    if (xcb_connection_has_error(connection_.get()) != 0) {
        end();
    } else if (moved_) {
        again_.start();
    }
}

void X11Displays::end() {
    readable_->setEnabled(false); // A closed socket stays readable.
    again_.stop();
    poll_.reset();
    if (std::exchange(state_, {}).isOff()) {
        Q_EMIT changed();
    }
}

} // namespace orvanta
