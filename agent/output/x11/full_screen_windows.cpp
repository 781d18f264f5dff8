#include "agent/output/x11/full_screen_windows.h"

#include "agent/output/x11/reply.h"

#include <algorithm>

namespace vantor::agent::x11 {
namespace {

bool contains(std::span<const std::uint32_t> values, std::uint32_t value) {
    return std::find(values.begin(), values.end(), value) != values.end();
}

} // namespace

bool FullScreenWindows::concerns(const xcb_generic_event_t& event) const {
    const auto isFound = [this](xcb_window_t window) {
        return std::any_of(found_.begin(), found_.end(),
                           [window](const Found& each) { return each.window == window; });
    };
    switch (event.response_type & 0x7F) {
    case XCB_PROPERTY_NOTIFY: {
        const auto& notify = reinterpret_cast<const xcb_property_notify_event_t&>(event);
        if (notify.window == connection_.root()) {
            return notify.atom == connection_.atom(Atom::clientList) ||
                   notify.atom == connection_.atom(Atom::currentDesktop);
        }
        return notify.atom == connection_.atom(Atom::stateOfWindow) ||
               notify.atom == connection_.atom(Atom::desktopOfWindow);
    }
    case XCB_CONFIGURE_NOTIFY:
        return isFound(reinterpret_cast<const xcb_configure_notify_event_t&>(event).window);
    case XCB_MAP_NOTIFY:
        return isFound(reinterpret_cast<const xcb_map_notify_event_t&>(event).window);
    case XCB_UNMAP_NOTIFY:
        return isFound(reinterpret_cast<const xcb_unmap_notify_event_t&>(event).window);
    default:
        return false;
    }
}

void FullScreenWindows::read(std::span<const xcb_window_t> own) {
    found_.clear();
    const auto current = connection_.values(connection_.root(), Atom::currentDesktop);
    for (const xcb_window_t window : connection_.values(connection_.root(), Atom::clientList)) {
        if (contains(own, window)) {
            continue;
        }
        // Watched before it is looked at, so that nothing is missed.
        watch(window, XCB_EVENT_MASK_PROPERTY_CHANGE);
        if (!isFullScreen(window) || !isOnCurrentDesktop(window, current)) {
            continue;
        }
        watch(window, XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY);
        found_.push_back({.window = window, .place = placeOf(window)});
    }
}

bool FullScreenWindows::cover(const Rectangle& place) const {
    return std::any_of(found_.begin(), found_.end(),
                       [&place](const Found& each) { return each.place.contains(place); });
}

bool FullScreenWindows::isOnCurrentDesktop(xcb_window_t window,
                                           std::span<const std::uint32_t> current) const {
    const auto desktop = connection_.values(window, Atom::desktopOfWindow);
    return desktop.empty() || desktop[0] == kOnAllDesktops || contains(current, desktop[0]);
}

bool FullScreenWindows::isFullScreen(xcb_window_t window) const {
    const auto states = connection_.values(window, Atom::stateOfWindow);
    return contains(states, connection_.atom(Atom::stateFullScreen)) &&
           !contains(states, connection_.atom(Atom::stateHidden));
}

Rectangle FullScreenWindows::placeOf(xcb_window_t window) const {
    xcb_connection_t* const xcb = connection_.get();
    const auto attributes = owned(
        xcb_get_window_attributes_reply(xcb, xcb_get_window_attributes(xcb, window), nullptr));
    const auto geometry =
        owned(xcb_get_geometry_reply(xcb, xcb_get_geometry(xcb, window), nullptr));
    const auto corner = owned(xcb_translate_coordinates_reply(
        xcb, xcb_translate_coordinates(xcb, window, connection_.root(), 0, 0), nullptr));
    if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE || !geometry || !corner) {
        return {};
    }
    return {.x = corner->dst_x,
            .y = corner->dst_y,
            .width = geometry->width,
            .height = geometry->height};
}

void FullScreenWindows::watch(xcb_window_t window, std::uint32_t events) const {
    xcb_change_window_attributes(connection_.get(), window, XCB_CW_EVENT_MASK, &events);
}

} // namespace vantor::agent::x11
