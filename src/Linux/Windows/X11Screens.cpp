#include "Linux/Windows/X11Screens.h"

#include "Linux/Windows/X11Reply.h"

#include <algorithm>
#include <cstdint>

namespace orvanta {

namespace {

xcb_window_t rootWindow(xcb_connection_t* connection) {
    return xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
}

auto property(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t name, xcb_atom_t type,
              uint32_t length) {
    return owned(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, name, type, 0, length), nullptr));
}

/// Of the virtual desktop that is shown.
QRect workArea(xcb_connection_t* connection) {
    const xcb_window_t root = rootWindow(connection);
    const auto current = property(connection, root, internAtom(connection, "_NET_CURRENT_DESKTOP"),
                                  XCB_ATOM_CARDINAL, 1);
    const auto numbersOfCurrent = numbers(current.get());
    const size_t desktop = numbersOfCurrent.empty() ? 0 : numbersOfCurrent[0];
    constexpr uint32_t manyDesktops = 4 * 256;
    const auto areas = property(connection, root, internAtom(connection, "_NET_WORKAREA"),
                                XCB_ATOM_CARDINAL, manyDesktops);
    const auto all = numbers(areas.get());
    if (all.size() / 4 <= desktop) {
        return {};
    }
    const auto area = all.subspan(4 * desktop, 4);
    return {static_cast<int>(area[0]), static_cast<int>(area[1]), static_cast<int>(area[2]),
            static_cast<int>(area[3])};
}

/// A window's claim to an edge of the screen, as rectangles of the screen.
std::vector<QRect> strutRectangles(std::span<const uint32_t> strut, QSize screen) {
    const auto number = [&strut](size_t i) {
        constexpr uint32_t most = INT16_MAX; // No X screen is larger.
        return static_cast<int>(std::min(strut[i], most));
    };
    const auto span = [](int begin, int end) {
        return end - begin + 1;
    };
    std::vector<QRect> result;
    if (const int left = number(0); left > 0) {
        result.emplace_back(0, number(4), left, span(number(4), number(5)));
    }
    if (const int right = number(1); right > 0) {
        result.emplace_back(screen.width() - right, number(6), right, span(number(6), number(7)));
    }
    if (const int top = number(2); top > 0) {
        result.emplace_back(number(8), 0, span(number(8), number(9)), top);
    }
    if (const int bottom = number(3); bottom > 0) {
        result.emplace_back(number(10), screen.height() - bottom, span(number(10), number(11)),
                            bottom);
    }
    return result;
}

std::vector<QRect> struts(xcb_connection_t* connection) {
    const xcb_window_t root = rootWindow(connection);
    const auto geometry =
        owned(xcb_get_geometry_reply(connection, xcb_get_geometry(connection, root), nullptr));
    if (!geometry) {
        return {};
    }
    constexpr uint32_t manyWindows = 16384;
    const auto clients = property(connection, root, internAtom(connection, "_NET_CLIENT_LIST"),
                                  XCB_ATOM_WINDOW, manyWindows);
    const xcb_atom_t partial = internAtom(connection, "_NET_WM_STRUT_PARTIAL");
    constexpr uint32_t edges = 12;
    std::vector<xcb_get_property_cookie_t> cookies;
    for (const xcb_window_t window : numbers(clients.get())) {
        cookies.push_back(
            xcb_get_property(connection, 0, window, partial, XCB_ATOM_CARDINAL, 0, edges));
    }
    std::vector<QRect> result;
    for (const xcb_get_property_cookie_t cookie : cookies) {
        const auto reply = owned(xcb_get_property_reply(connection, cookie, nullptr));
        if (const auto strut = numbers(reply.get()); strut.size() == edges) {
            const auto rectangles =
                strutRectangles(strut, QSize(geometry->width, geometry->height));
            result.insert(result.end(), rectangles.begin(), rectangles.end());
        }
    }
    return result;
}

/// Takes the strut away at the edge of the monitor that it lies along.
QRect without(QRect monitor, const QRect& strut) {
    const QRect common = monitor & strut;
    if (common.isEmpty()) {
        return monitor;
    }
    if (common.width() >= common.height()) {
        if (common.top() == monitor.top()) {
            monitor.setTop(common.bottom() + 1);
        } else {
            monitor.setBottom(common.top() - 1);
        }
    } else if (common.left() == monitor.left()) {
        monitor.setLeft(common.right() + 1);
    } else {
        monitor.setRight(common.left() - 1);
    }
    return monitor;
}

} // namespace

std::vector<QRect> x11WorkAreas(xcb_connection_t* connection, const std::vector<QRect>& monitors) {
    std::vector<QRect> result;
    if (monitors.size() == 1) {
        result.push_back(monitors[0] & workArea(connection));
    } else {
        const std::vector<QRect> taken = struts(connection);
        for (QRect area : monitors) {
            for (const QRect& strut : taken) {
                area = without(area, strut);
            }
            result.push_back(area);
        }
    }
    for (size_t i = 0; i < result.size(); ++i) {
        if (result[i].isEmpty()) {
            result[i] = monitors[i];
        }
    }
    return result;
}

void activateX11Window(xcb_connection_t* connection, unsigned window) {
    constexpr uint32_t fromPager = 2;
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = internAtom(connection, "_NET_ACTIVE_WINDOW");
    event.data.data32[0] = fromPager;
    event.data.data32[1] = XCB_CURRENT_TIME;
    xcb_send_event(connection, 0, rootWindow(connection),
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection);
}

} // namespace orvanta
