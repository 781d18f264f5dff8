#include "agent/output/x11/connection.h"

#include "agent/output/x11/reply.h"

#include <string_view>

namespace vantor::agent::x11 {
namespace {

/// In the order of `Atom`.
constexpr std::array<std::string_view, kAtomCount> kNames{
    "_NET_CLIENT_LIST",
    "_NET_CURRENT_DESKTOP",
    "_NET_WM_DESKTOP",
    "EDID",
    "_MOTIF_WM_HINTS",
    "_NET_WM_STATE_BELOW",
    "_NET_WM_STATE_FULLSCREEN",
    "_NET_WM_STATE_HIDDEN",
    "_NET_WM_STATE",
    "_NET_WM_STATE_SKIP_PAGER",
    "_NET_WM_STATE_SKIP_TASKBAR",
    "_NET_WM_STATE_STICKY",
    "_NET_SUPPORTING_WM_CHECK",
    "_NET_WM_WINDOW_TYPE_DESKTOP",
    "_NET_WM_WINDOW_TYPE",
    "UTF8_STRING",
    "_NET_WM_NAME",
};

/// Of a property, in words of four bytes; more is not read.
constexpr std::uint32_t kMaxWords = 16384;

} // namespace

std::unique_ptr<Connection> Connection::open() {
    int screenNumber = 0;
    std::unique_ptr<Connection> made(new Connection(xcb_connect(nullptr, &screenNumber)));
    return made->learn(screenNumber) ? std::move(made) : nullptr;
}

bool Connection::learn(int screenNumber) {
    if (isLost()) {
        return false;
    }
    auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection_));
    for (; screenNumber > 0 && screens.rem > 1; --screenNumber) {
        xcb_screen_next(&screens);
    }
    screen_ = screens.data;
    std::array<xcb_intern_atom_cookie_t, kAtomCount> cookies{};
    for (std::size_t i = 0; i < kAtomCount; ++i) {
        cookies[i] = xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(kNames[i].size()),
                                     kNames[i].data());
    }
    for (std::size_t i = 0; i < kAtomCount; ++i) {
        if (const auto reply = owned(xcb_intern_atom_reply(connection_, cookies[i], nullptr))) {
            atoms_[i] = reply->atom;
        }
    }
    return !isLost();
}

std::string Connection::text(xcb_atom_t property) const {
    const auto reply = owned(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, root(), property, XCB_ATOM_STRING, 0, kMaxWords),
        nullptr));
    if (!reply || reply->format != 8) {
        return {};
    }
    return {static_cast<const char*>(xcb_get_property_value(reply.get())), reply->value_len};
}

std::vector<std::uint32_t> Connection::values(xcb_window_t window, Atom property) const {
    const auto reply = owned(xcb_get_property_reply(
        connection_,
        xcb_get_property(connection_, 0, window, atom(property), XCB_ATOM_ANY, 0, kMaxWords),
        nullptr));
    if (!reply || reply->format != 32) {
        return {};
    }
    const auto* const first =
        static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {first, first + reply->value_len};
}

std::string Connection::nameOf(xcb_atom_t atom) const {
    const auto reply =
        owned(xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, atom), nullptr));
    if (!reply) {
        return {};
    }
    return {xcb_get_atom_name_name(reply.get()),
            static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get()))};
}

void Connection::setValues(xcb_window_t window, xcb_atom_t property, xcb_atom_t type,
                           const std::vector<std::uint32_t>& values) const {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, property, type, 32,
                        static_cast<std::uint32_t>(values.size()), values.data());
}

bool Connection::hasWindowManager() const {
    // A manager that has ended may have left the root's property behind: its window tells.
    const auto check = values(root(), Atom::supportingWindowManager);
    return check.size() == 1 && values(check[0], Atom::supportingWindowManager) == check;
}

} // namespace vantor::agent::x11
