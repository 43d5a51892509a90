#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <memory>
#include <span>
#include <string_view>

namespace orvanta {

/// Of _NET_CLIENT_LIST, in 32-bit units: more windows than that are not looked at.
inline constexpr uint32_t longestClientList = 16384;

/// What libxcb hands over is to be freed.
struct X11Free {
    void operator()(void* reply) const { std::free(reply); }
};

template <typename T>
std::unique_ptr<T, X11Free> owned(T* reply) {
    return std::unique_ptr<T, X11Free>(reply);
}

/// The atom of this name; None when the server is gone.
inline xcb_atom_t internAtom(xcb_connection_t* connection, std::string_view name) {
    const auto reply = owned(xcb_intern_atom_reply(
        connection, xcb_intern_atom(connection, 0, static_cast<uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

/// The numbers of a property of 32-bit ones (CARDINAL, WINDOW); valid as long as the reply.
inline std::span<const uint32_t> numbers(const xcb_get_property_reply_t* reply) {
    if (reply == nullptr || reply->format != 32) {
        return {};
    }
    return {static_cast<const uint32_t*>(xcb_get_property_value(reply)),
            static_cast<size_t>(xcb_get_property_value_length(reply)) / sizeof(uint32_t)};
}

} // namespace orvanta
