#include "Linux/Windows/X11WindowHider.h"

#include "Linux/ProcessParent.h"
#include "Linux/Windows/X11Reply.h"

#include <QMetaObject>
#include <QSocketNotifier>

#include <optional>
#include <utility>
#include <vector>

namespace orvanta {

namespace {

constexpr uint32_t normalState = 1;
constexpr uint32_t iconicState = 3;

/// Browsers ask to be activated when they have come up, which brings their window back.
constexpr int mostTimes = 5;

xcb_get_property_cookie_t request(xcb_connection_t* connection, xcb_window_t window,
                                  xcb_atom_t property, xcb_atom_t type, uint32_t length) {
    return xcb_get_property(connection, 0, window, property, type, 0, length);
}

uint32_t firstNumber(xcb_connection_t* connection, xcb_get_property_cookie_t cookie) {
    const auto reply = owned(xcb_get_property_reply(connection, cookie, nullptr));
    const auto values = numbers(reply.get());
    return values.empty() ? 0 : values.front();
}

} // namespace

std::unique_ptr<X11WindowHider> X11WindowHider::open(const QByteArray& display, qint64 process,
                                                     std::function<void()> hidden) {
    if (display.isEmpty()) {
        return nullptr; // libxcb would look for $DISPLAY itself.
    }
    int number = 0;
    Connection connection(xcb_connect(display.constData(), &number));
    if (xcb_connection_has_error(connection.get()) != 0) {
        return nullptr;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection.get()));
    while (number > 0 && screens.rem > 1) {
        xcb_screen_next(&screens);
        --number;
    }
    return std::unique_ptr<X11WindowHider>(
        new X11WindowHider(std::move(connection), screens.data->root, process, std::move(hidden)));
}

X11WindowHider::X11WindowHider(Connection connection, xcb_window_t root, qint64 process,
                               std::function<void()> hidden)
    : connection_(std::move(connection))
    , root_(root)
    , process_(process)
    , hidden_(std::move(hidden))
    , clientList_(internAtom(connection_.get(), "_NET_CLIENT_LIST"))
    , processOfWindow_(internAtom(connection_.get(), "_NET_WM_PID"))
    , state_(internAtom(connection_.get(), "WM_STATE"))
    , changeState_(internAtom(connection_.get(), "WM_CHANGE_STATE"))
    , readable_(std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(connection_.get()),
                                                  QSocketNotifier::Read)) {
    QObject::connect(readable_.get(), &QSocketNotifier::activated, readable_.get(),
                     [this] { read(); });
    watch(root_); // Before the first look, so that nothing falls in between.
    look();
    // What came with the replies is not announced by the socket any more.
    QMetaObject::invokeMethod(
        readable_.get(), [this] { read(); }, Qt::QueuedConnection);
}

X11WindowHider::~X11WindowHider() = default;

void X11WindowHider::watch(xcb_window_t window) const {
    const uint32_t events = XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &events);
}

void X11WindowHider::read() {
    bool isHidden = false;
    // Replies that are read on the way bring further events, which the socket does not announce.
    while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
        if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY) {
            continue;
        }
        const auto* change = reinterpret_cast<const xcb_property_notify_event_t*>(event.get());
        if (change->window == root_ && change->atom == clientList_) {
            look();
        } else if (change->atom == state_) {
            const uint32_t state = stateOf(change->window);
            isHidden = isHidden || state == iconicState;
            if (state == normalState) {
                iconify(change->window);
            }
        }
    }
    xcb_flush(connection_.get());
    if (xcb_connection_has_error(connection_.get()) != 0) {
        readable_->setEnabled(false); // A closed socket stays readable.
    }
    if (isHidden) {
        hidden_();
    }
}

void X11WindowHider::look() {
    xcb_connection_t* const c = connection_.get();
    const auto list = owned(xcb_get_property_reply(
        c, request(c, root_, clientList_, XCB_ATOM_WINDOW, longestClientList), nullptr));
    std::vector<std::pair<xcb_window_t, xcb_get_property_cookie_t>> fresh;
    for (const xcb_window_t window : numbers(list.get())) {
        if (seen_.insert(window).second) {
            fresh.emplace_back(window, request(c, window, processOfWindow_, XCB_ATOM_CARDINAL, 1));
        }
    }
    for (const auto& [window, cookie] : fresh) {
        if (isOurs(firstNumber(c, cookie))) {
            watch(window);
            iconify(window);
        }
    }
    xcb_flush(c);
}

/// A script may have started what has the windows.
bool X11WindowHider::isOurs(qint64 process) const {
    for (auto each = std::optional(process); each; each = parentOf(*each)) {
        if (*each == process_) {
            return true;
        }
    }
    return false;
}

void X11WindowHider::iconify(xcb_window_t window) {
    if (++times_[window] > mostTimes) {
        return;
    }
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window;
    message.type = changeState_;
    message.data.data32[0] = iconicState;
    xcb_send_event(connection_.get(), 0, root_,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
}

uint32_t X11WindowHider::stateOf(xcb_window_t window) const {
    return firstNumber(connection_.get(), request(connection_.get(), window, state_, state_, 1));
}

} // namespace orvanta
