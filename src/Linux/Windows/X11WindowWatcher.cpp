#include "Linux/Windows/X11WindowWatcher.h"

#include "Linux/MainLoop/ReadableNotifier.h"
#include "Linux/Windows/X11Reply.h"

#include <xcb/res.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <span>
#include <string_view>
#include <thread>
#include <utility>

namespace orvanta {

namespace {

/// How long after the start a desktop may take to bring up its window manager.
constexpr MainLoop::Duration windowManagerPatience{10.0};

/// A switch comes as a handful of changes within a millisecond or two: they are let come and looked
/// at together, as each would be a wake-up.
constexpr std::chrono::milliseconds gathering{10};

/// Window managers publish "none" before each switch; it counts once it has stood this long.
constexpr MainLoop::Duration noneSettling{0.1};

/// Lengths in 32-bit units, as GetProperty counts.
constexpr uint32_t longestProperty = 64 * 1024 / 4;
constexpr uint32_t longestTypeList = 32;
constexpr uint32_t longestSupportedList = 4096;

constexpr uint32_t checkWindowEvents =
    XCB_EVENT_MASK_STRUCTURE_NOTIFY | XCB_EVENT_MASK_PROPERTY_CHANGE;

constexpr std::string_view xwaylandExtension = "XWAYLAND";

using Property = std::unique_ptr<xcb_get_property_reply_t, X11Free>;

/// A property to be read: sent when made, so that several go out together.
class PropertyRequest {
public:
    PropertyRequest(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t property,
                    uint32_t length)
        : connection_(connection)
        , sequence_(xcb_get_property(connection, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                                     length)
                        .sequence) {}
    ~PropertyRequest() {
        if (sequence_ != 0) {
            xcb_discard_reply(connection_, sequence_);
        }
    }
    PropertyRequest(const PropertyRequest&) = delete;
    PropertyRequest& operator=(const PropertyRequest&) = delete;

    /// Null when the window or the connection is gone. To be called once at most.
    Property reply() {
        return owned(xcb_get_property_reply(connection_, {std::exchange(sequence_, 0)}, nullptr));
    }

private:
    xcb_connection_t* connection_;
    unsigned sequence_;
};

/// The process of a window's client, by the server's own knowledge (X-Resource 1.2); nothing is
/// asked of a server that has none.
class ClientIdsRequest {
public:
    ClientIdsRequest(xcb_connection_t* connection, xcb_window_t window, bool isKnown)
        : connection_(connection) {
        if (isKnown) {
            const xcb_res_client_id_spec_t client{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
            sequence_ = xcb_res_query_client_ids(connection, 1, &client).sequence;
        }
    }
    ~ClientIdsRequest() {
        if (sequence_ != 0) {
            xcb_discard_reply(connection_, sequence_);
        }
    }
    ClientIdsRequest(const ClientIdsRequest&) = delete;
    ClientIdsRequest& operator=(const ClientIdsRequest&) = delete;

    /// 0 when it does not know: the client runs on another machine. To be called once at most.
    uint32_t process() {
        const auto ids = owned(
            xcb_res_query_client_ids_reply(connection_, {std::exchange(sequence_, 0)}, nullptr));
        uint32_t process = 0;
        if (ids) {
            for (auto i = xcb_res_query_client_ids_ids_iterator(ids.get()); i.rem > 0;
                 xcb_res_client_id_value_next(&i)) {
                const auto& [about, bytes] = *i.data;
                if (about.mask == XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID &&
                    bytes == sizeof(uint32_t)) {
                    process = *xcb_res_client_id_value_value(i.data);
                }
            }
        }
        return process;
    }

private:
    xcb_connection_t* connection_;
    unsigned sequence_ = 0;
};

/// The values of a property of 32-bit units; empty unless it is of this type.
std::span<const uint32_t> words(const Property& property, xcb_atom_t type) {
    if (!property || property->type != type || property->format != 32) {
        return {};
    }
    return {static_cast<const uint32_t*>(xcb_get_property_value(property.get())),
            property->value_len};
}

uint32_t firstWord(const Property& property, xcb_atom_t type) {
    const auto values = words(property, type);
    return values.empty() ? 0 : values.front();
}

/// The bytes of a text property; empty if it is none, or longer than was asked for: a name of that
/// size is garbage. Valid as long as the property.
QByteArrayView text(const Property& property, xcb_atom_t utf8String) {
    if (!property || property->format != 8 || property->bytes_after != 0 ||
        (property->type != XCB_ATOM_STRING && property->type != utf8String)) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(property.get())),
            static_cast<qsizetype>(property->value_len)};
}

/// Cuts the text up to its first NUL, or all of it, off the front.
QString takeString(QByteArrayView& bytes) {
    const auto nul = std::ranges::find(bytes, '\0');
    const QByteArrayView string(bytes.begin(), nul);
    bytes = bytes.sliced(nul == bytes.end() ? bytes.size() : string.size() + 1);
    // By the standard WM_CLASS is Latin-1; toolkits write UTF-8 nevertheless.
    return string.isValidUtf8() ? QString::fromUtf8(string) : QString::fromLatin1(string);
}

/// Sends the questions and sleeps while they are answered: the server answers one at a time, and
/// whoever waits is woken for each. Where this is too short, the replies wait for the rest.
void letAnswer(xcb_connection_t* c) {
    constexpr std::chrono::microseconds usual{200};
    xcb_flush(c);
    std::this_thread::sleep_for(usual);
}

bool hasClass(const Window& window) {
    return !window.wmClass.isEmpty() || !window.wmInstance.isEmpty();
}

} // namespace

/// What is asked of the active window.
struct X11WindowWatcher::WindowRequest {
    WindowRequest(xcb_connection_t* c, xcb_window_t window, const Atoms& atoms, bool tellsClientIds)
        : wmClass(c, window, XCB_ATOM_WM_CLASS, longestProperty)
        , types(c, window, atoms[WindowType], longestTypeList)
        , gtkApplicationId(c, window, atoms[GtkApplicationId], longestProperty)
        , desktopFile(c, window, atoms[KdeDesktopFile], longestProperty)
        , claimedPid(c, window, atoms[WmPid], 1)
        , clientIds(c, window, tellsClientIds) {}

    PropertyRequest wmClass;
    PropertyRequest types;
    PropertyRequest gtkApplicationId;
    PropertyRequest desktopFile;
    PropertyRequest claimedPid;
    ClientIdsRequest clientIds;
};

X11WindowWatcher::X11WindowWatcher(const QByteArray& display, MainLoop& mainLoop)
    : WindowWatcher(State::Unsupported)
    , mainLoop_(mainLoop) {
    if (!connectTo(display)) {
        connection_.reset();
        return;
    }
    setState(State::Waiting);
    readable_ = std::make_unique<ReadableNotifier>(xcb_get_file_descriptor(connection_.get()));
    connect(readable_.get(), &ReadableNotifier::activated, this, [this] {
        readable_->setEnabled(false);
        gather_.start();
    });
    patience_ = mainLoop_.once(windowManagerPatience, [this] {
        patience_.reset();
        setState(State::Unsupported);
    });
    gather_.setSingleShot(true);
    gather_.setTimerType(Qt::PreciseTimer);
    gather_.setInterval(gathering);
    connect(&gather_, &QTimer::timeout, this, [this] { process(); });
    readWindowManager();
    settle();
}

X11WindowWatcher::~X11WindowWatcher() = default;

bool X11WindowWatcher::connectTo(const QByteArray& display) {
    if (display.isEmpty()) {
        return false; // libxcb would look for $DISPLAY itself.
    }
    int screen = 0;
    connection_.reset(xcb_connect(display.constData(), &screen));
    xcb_connection_t* const c = connection_.get();
    if (xcb_connection_has_error(c) != 0) {
        return false;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(c));
    while (screen > 0 && screens.rem > 1) {
        xcb_screen_next(&screens);
        --screen;
    }
    root_ = screens.data->root;
    // Before anything is read, so that no change falls in between.
    select(root_, XCB_EVENT_MASK_PROPERTY_CHANGE);

    constexpr std::array<std::string_view, AtomCount> names{"_NET_ACTIVE_WINDOW",
                                                            "_NET_CLIENT_LIST",
                                                            "_NET_SUPPORTED",
                                                            "_NET_SUPPORTING_WM_CHECK",
                                                            "_NET_WM_PID",
                                                            "_NET_WM_WINDOW_TYPE",
                                                            "_NET_WM_WINDOW_TYPE_DESKTOP",
                                                            "_NET_WM_WINDOW_TYPE_DOCK",
                                                            "_GTK_APPLICATION_ID",
                                                            "_KDE_NET_WM_DESKTOP_FILE",
                                                            "UTF8_STRING"};
    std::array<xcb_intern_atom_cookie_t, AtomCount> cookies{};
    for (unsigned i = 0; i < AtomCount; ++i) {
        cookies[i] = xcb_intern_atom(c, 0, static_cast<uint16_t>(names[i].size()), names[i].data());
    }
    const auto xwayland = xcb_query_extension(c, static_cast<uint16_t>(xwaylandExtension.size()),
                                              xwaylandExtension.data());
    xcb_prefetch_extension_data(c, &xcb_res_id);
    for (unsigned i = 0; i < AtomCount; ++i) {
        const auto atom = owned(xcb_intern_atom_reply(c, cookies[i], nullptr));
        if (!atom) {
            return false;
        }
        atoms_[i] = atom->atom;
    }
    const auto wayland = owned(xcb_query_extension_reply(c, xwayland, nullptr));
    if (!wayland || wayland->present != 0) {
        return false; // Of the compositor's windows it would show only some.
    }

    const auto* resources = xcb_get_extension_data(c, &xcb_res_id);
    if (resources != nullptr && resources->present != 0) {
        const auto version =
            owned(xcb_res_query_version_reply(c, xcb_res_query_version(c, 1, 2), nullptr));
        tellsClientIds_ = version && std::pair(version->server_major, version->server_minor) >=
                                         std::pair<uint16_t, uint16_t>(1, 2);
    }
    return xcb_connection_has_error(c) == 0;
}

void X11WindowWatcher::process() {
    while (const auto event = owned(xcb_poll_for_event(connection_.get()))) {
        note(*event);
    }
    if (std::exchange(windowManagerMoved_, false)) {
        readWindowManager();
    } else if (std::exchange(activeWindowMoved_, false) && state() == State::Watching) {
        readActiveWindow();
    }
    settle();
}

/// Leaves nothing behind that the socket would not announce: reading a reply can bring events
/// along. They are gathered anew, so that a client which floods us starves nobody.
void X11WindowWatcher::settle() {
    while (const auto event = owned(xcb_poll_for_queued_event(connection_.get()))) {
        note(*event);
    }
    if (xcb_connection_has_error(connection_.get()) != 0) {
        end();
        return;
    }
    xcb_flush(connection_.get());
    if (windowManagerMoved_ || activeWindowMoved_) {
        gather_.start();
    } else {
        readable_->setEnabled(true);
    }
}

void X11WindowWatcher::update() {
    if (state() == State::Watching) {
        activeWindowMoved_ = false;
        readActiveWindow();
        settle();
    }
}

void X11WindowWatcher::end() {
    readable_->setEnabled(false); // A closed socket stays readable.
    gather_.stop();
    patience_.reset();
    noneSettles_.reset();
    setActiveWindow(std::nullopt);
    setState(State::Ended);
}

void X11WindowWatcher::note(const xcb_generic_event_t& event) {
    constexpr unsigned sentByClient = 0x80;
    const unsigned type = event.response_type & ~sentByClient;
    if (type == XCB_PROPERTY_NOTIFY) {
        xcb_property_notify_event_t change{};
        std::memcpy(&change, &event, sizeof change);
        if (change.window == root_) {
            activeWindowMoved_ |=
                change.atom == atoms_[ActiveWindow] || change.atom == atoms_[ClientList];
            windowManagerMoved_ |=
                change.atom == atoms_[SupportingWmCheck] || change.atom == atoms_[Supported];
        } else if (change.window == check_) {
            windowManagerMoved_ |= change.atom == atoms_[SupportingWmCheck];
        } else if (change.window == awaitingClass_) {
            activeWindowMoved_ |= change.atom == XCB_ATOM_WM_CLASS;
        }
    } else if (type == XCB_DESTROY_NOTIFY) {
        xcb_destroy_notify_event_t destroyed{};
        std::memcpy(&destroyed, &event, sizeof destroyed);
        windowManagerMoved_ |= destroyed.window == check_;
    }
}

void X11WindowWatcher::readWindowManager() {
    xcb_connection_t* const c = connection_.get();
    xcb_window_t check =
        firstWord(PropertyRequest(c, root_, atoms_[SupportingWmCheck], 1).reply(), XCB_ATOM_WINDOW);
    if (check == root_) {
        check = XCB_WINDOW_NONE; // Nonsense, and what we listen to there is not to be touched.
    }
    if (check_ != XCB_WINDOW_NONE && check_ != check) {
        select(check_, XCB_EVENT_MASK_NO_EVENT);
    }
    check_ = check;
    activeWindowMoved_ = false;
    if (isWindowManager(check)) {
        patience_.reset();
        setState(State::Watching);
        readActiveWindow();
        return;
    }
    if (state() == State::Watching) {
        noneSettles_.reset();
        setActiveWindow(std::nullopt);
        setState(State::Waiting);
    }
}

/// The property on the root window outlives its window manager; only a check window that names
/// itself is alive.
bool X11WindowWatcher::isWindowManager(xcb_window_t check) const {
    if (check == XCB_WINDOW_NONE) {
        return false;
    }
    xcb_connection_t* const c = connection_.get();
    select(check, checkWindowEvents); // First, so that its end is not missed.
    PropertyRequest itself(c, check, atoms_[SupportingWmCheck], 1);
    PropertyRequest supported(c, root_, atoms_[Supported], longestSupportedList);
    const bool alive = firstWord(itself.reply(), XCB_ATOM_WINDOW) == check;
    const auto hints = supported.reply();
    return alive && std::ranges::count(words(hints, XCB_ATOM_ATOM), atoms_[ActiveWindow]) > 0;
}

/// Waits for the server twice: less than two more rounds of the main loop would cost.
void X11WindowWatcher::readActiveWindow() {
    const xcb_window_t id = activeWindowId();
    if (awaitingClass_ != id) {
        stopAwaitingClass();
    }
    if (id == XCB_WINDOW_NONE) {
        publish(std::nullopt);
        return;
    }
    auto window = readWindow(id);
    if (window && !hasClass(*window)) {
        // Anew each time: under the same id it may be another window. It may get its class before
        // we listen, so look once more.
        awaitingClass_ = id;
        select(id, XCB_EVENT_MASK_PROPERTY_CHANGE);
        window = readWindow(id);
    }
    if (window && hasClass(*window)) {
        stopAwaitingClass();
    }
    publish(std::move(window));
}

void X11WindowWatcher::stopAwaitingClass() {
    if (awaitingClass_ != XCB_WINDOW_NONE) {
        select(std::exchange(awaitingClass_, XCB_WINDOW_NONE), XCB_EVENT_MASK_NO_EVENT);
    }
}

xcb_window_t X11WindowWatcher::activeWindowId() const {
    xcb_connection_t* const c = connection_.get();
    PropertyRequest active(c, root_, atoms_[ActiveWindow], 1);
    PropertyRequest list(c, root_, atoms_[ClientList], longestClientList);
    letAnswer(c);
    const xcb_window_t id = firstWord(active.reply(), XCB_ATOM_WINDOW);
    const auto clients = list.reply();
    if (id == root_ || id == check_) {
        return XCB_WINDOW_NONE; // The window manager keeps the focus itself.
    }
    // Some window managers leave the last window's id behind when it closes.
    const bool listed = !clients || clients->type == XCB_ATOM_NONE || clients->bytes_after > 0 ||
                        std::ranges::count(words(clients, XCB_ATOM_WINDOW), id) > 0;
    if (!listed) {
        return XCB_WINDOW_NONE;
    }
    return id;
}

/// Absent if the window is gone, or is the desktop itself or a panel: the file manager that draws
/// the desktop is not the file manager in use.
std::optional<Window> X11WindowWatcher::readWindow(xcb_window_t id) const {
    xcb_connection_t* const c = connection_.get();
    WindowRequest request(c, id, atoms_, tellsClientIds_);
    letAnswer(c);
    Window window;
    window.id = id;
    const auto classReply = request.wmClass.reply();
    const auto typesReply = request.types.reply();
    auto bytes = text(classReply, atoms_[Utf8String]);
    window.wmInstance = takeString(bytes);
    window.wmClass = takeString(bytes);
    const auto gtkReply = request.gtkApplicationId.reply();
    bytes = text(gtkReply, atoms_[Utf8String]);
    window.gtkApplicationId = takeString(bytes);
    const auto fileReply = request.desktopFile.reply();
    bytes = text(fileReply, atoms_[Utf8String]);
    window.desktopFile = takeString(bytes);

    uint32_t pid = firstWord(request.claimedPid.reply(), XCB_ATOM_CARDINAL);
    if (tellsClientIds_) {
        // The server knows the process of every local client; one that it does not know runs on
        // another machine, and its claim would name a stranger here.
        pid = request.clientIds.process();
    }
    if (pid != 0) {
        window.processIdentifier = pid;
    }

    if (!classReply) {
        return std::nullopt;
    }
    const auto isType = [&](Atom type) {
        return std::ranges::count(words(typesReply, XCB_ATOM_ATOM), atoms_[type]) > 0;
    };
    if (isType(WindowTypeDesktop) || isType(WindowTypeDock)) {
        return std::nullopt;
    }
    return window;
}

void X11WindowWatcher::publish(std::optional<Window> window) {
    if (window) {
        noneSettles_.reset();
        setActiveWindow(std::move(window));
    } else if (activeWindow() && !noneSettles_) {
        noneSettles_ = mainLoop_.once(noneSettling, [this] {
            noneSettles_.reset();
            setActiveWindow(std::nullopt);
        });
    }
}

void X11WindowWatcher::select(xcb_window_t window, uint32_t events) const {
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &events);
}

} // namespace orvanta
