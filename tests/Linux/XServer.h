#pragma once

#include "Testing.h"

#include <xcb/xcb.h>

#include <cstdlib>

namespace orvanta {

/// An X server of our own, without a screen.
class XServer {
public:
    const QByteArray& display() const { return display_; }
    void kill() { program_.kill(); }

private:
    Program program_{u"Xvfb"_s,
                     {u"-displayfd"_s, u"1"_s, u"-screen"_s, u"0"_s, u"800x600x24"_s,
                      u"-nolisten"_s, u"tcp"_s, u"-noreset"_s}};
    QByteArray display_ = ':' + program_.nextLine();
};

/// A client with windows as a test wants them. What it does has happened when the call returns.
class XClient {
public:
    explicit XClient(const XServer& server)
        : connection_(xcb_connect(server.display().constData(), nullptr), &xcb_disconnect)
        , root_(xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data->root) {}

    xcb_window_t root() const { return root_; }
    xcb_window_t newId() { return xcb_generate_id(connection_.get()); }

    xcb_atom_t atom(std::string_view name) {
        auto* const reply = xcb_intern_atom_reply(
            connection_.get(),
            xcb_intern_atom(connection_.get(), 0, static_cast<uint16_t>(name.size()), name.data()),
            nullptr);
        const xcb_atom_t atom = reply->atom;
        std::free(reply);
        return atom;
    }
    void set(xcb_window_t window, std::string_view property, std::string_view type, uint8_t format,
             const void* data, size_t count) {
        xcb_change_property(connection_.get(), XCB_PROP_MODE_REPLACE, window, atom(property),
                            atom(type), format, static_cast<uint32_t>(count), data);
        sync();
    }
    void set(xcb_window_t window, std::string_view property, std::string_view type,
             const std::vector<uint32_t>& values) {
        set(window, property, type, 32, values.data(), values.size());
    }
    void setText(xcb_window_t window, std::string_view property, std::string_view type,
                 std::string_view bytes) {
        set(window, property, type, 8, bytes.data(), bytes.size());
    }
    void setClass(xcb_window_t window, const std::string& instance, const std::string& wmClass) {
        setText(window, "WM_CLASS", "STRING", instance + '\0' + wmClass + '\0');
    }

    xcb_window_t create(xcb_window_t id) {
        xcb_create_window(connection_.get(), XCB_COPY_FROM_PARENT, id, root_, 0, 0, 200, 100, 0,
                          XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
        sync();
        return id;
    }
    xcb_window_t create(const std::string& instance, const std::string& wmClass) {
        const xcb_window_t window = create(newId());
        setClass(window, instance, wmClass);
        return window;
    }
    void destroy(xcb_window_t window) {
        xcb_destroy_window(connection_.get(), window);
        sync();
    }

private:
    void sync() {
        std::free(xcb_get_input_focus_reply(connection_.get(),
                                            xcb_get_input_focus(connection_.get()), nullptr));
    }

    std::unique_ptr<xcb_connection_t, decltype(&xcb_disconnect)> connection_;
    xcb_window_t root_;
};

} // namespace orvanta
