#include "agent/output/x11/desktop_window.h"

#include <string_view>
#include <utility>
#include <vulkan/vulkan_xcb.h>
#include <xcb/shape.h>

namespace vantor::agent::x11 {
namespace {

constexpr std::string_view kWindowName = "Wallpaper";
/// Instance and class, each ended by a zero.
constexpr char kClass[] = "vantor-agent\0Vantor-agent";

std::uint32_t word(std::int32_t value) { return static_cast<std::uint32_t>(value); }

void setText(const Connection& connection, xcb_window_t window, xcb_atom_t property,
             xcb_atom_t type, std::string_view text) {
    xcb_change_property(connection.get(), XCB_PROP_MODE_REPLACE, window, property, type, 8,
                        static_cast<std::uint32_t>(text.size()), text.data());
}

} // namespace

DesktopWindow::DesktopWindow(MainLoop& loop, const Connection& connection, const Monitor& monitor,
                             std::function<void(Output&)> refresh)
    : connection_(connection), monitor_(monitor), window_(xcb_generate_id(connection.get())),
      timer_(loop, monitor.description.refreshRate, [this] { due(); }),
      refresh_(std::move(refresh)), description_(monitor.description), width_(monitor.place.width),
      height_(monitor.place.height), isManaged_(connection.hasWindowManager()) {
    xcb_connection_t* const xcb = connection_.get();
    // Without a background what was there before stays until there is a picture.
    const std::uint32_t values[] = {XCB_BACK_PIXMAP_NONE, isManaged_ ? 0U : 1U,
                                    XCB_EVENT_MASK_EXPOSURE | XCB_EVENT_MASK_VISIBILITY_CHANGE |
                                        XCB_EVENT_MASK_STRUCTURE_NOTIFY};
    const Rectangle& place = monitor_.place;
    xcb_create_window(xcb, XCB_COPY_FROM_PARENT, window_, connection_.root(),
                      static_cast<std::int16_t>(place.x), static_cast<std::int16_t>(place.y),
                      static_cast<std::uint16_t>(place.width),
                      static_cast<std::uint16_t>(place.height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    setProperties();
    // No pointer ever meets it.
    xcb_shape_rectangles(xcb, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         window_, 0, 0, 0, nullptr);
    if (!isManaged_) {
        const std::uint32_t below = XCB_STACK_MODE_BELOW;
        xcb_configure_window(xcb, window_, XCB_CONFIG_WINDOW_STACK_MODE, &below);
    }
    xcb_map_window(xcb, window_);
}

DesktopWindow::~DesktopWindow() {
    xcb_destroy_window(connection_.get(), window_);
    xcb_flush(connection_.get());
}

void DesktopWindow::setProperties() {
    setText(connection_, window_, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, kWindowName);
    setText(connection_, window_, connection_.atom(Atom::windowName),
            connection_.atom(Atom::utf8String), kWindowName);
    setText(connection_, window_, XCB_ATOM_WM_CLASS, XCB_ATOM_STRING, {kClass, sizeof(kClass)});
    const auto set = [this](Atom property, xcb_atom_t type,
                            const std::vector<std::uint32_t>& values) {
        connection_.setValues(window_, connection_.atom(property), type, values);
    };
    // Extended Window Manager Hints 1.5.
    set(Atom::typeOfWindow, XCB_ATOM_ATOM, {connection_.atom(Atom::typeDesktop)});
    set(Atom::stateOfWindow, XCB_ATOM_ATOM,
        {connection_.atom(Atom::stateBelow), connection_.atom(Atom::stateSticky),
         connection_.atom(Atom::stateSkipTaskbar), connection_.atom(Atom::stateSkipPager)});
    set(Atom::desktopOfWindow, XCB_ATOM_CARDINAL, {kOnAllDesktops});
    // Flags, functions, decorations (none of them), input mode, status.
    set(Atom::motifHints, connection_.atom(Atom::motifHints), {1U << 1U, 0, 0, 0, 0});
    // Inter-Client Communication Conventions 4.1.2: it takes no input; its place is a person's own.
    connection_.setValues(window_, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS,
                          {1, 0, 0, 0, 0, 0, 0, 0, 0});
    const Rectangle& place = monitor_.place;
    connection_.setValues(window_, XCB_ATOM_WM_NORMAL_HINTS, XCB_ATOM_WM_SIZE_HINTS,
                          {3, word(place.x), word(place.y), place.width, place.height, 0, 0, 0, 0,
                           0, 0, 0, 0, 0, 0, 0, 0, 0});
}

void DesktopWindow::meetWindowManager() {
    xcb_connection_t* const xcb = connection_.get();
    if (!std::exchange(isManaged_, true)) {
        const std::uint32_t isFree = 0;
        xcb_unmap_window(xcb, window_);
        xcb_change_window_attributes(xcb, window_, XCB_CW_OVERRIDE_REDIRECT, &isFree);
        isMapped_ = false;
    }
    if (!isMapped_) {
        xcb_map_window(xcb, window_);
    }
}

VkSurfaceKHR DesktopWindow::makeSurface(VkInstance instance) {
    const auto create = reinterpret_cast<PFN_vkCreateXcbSurfaceKHR>(
        vkGetInstanceProcAddr(instance, "vkCreateXcbSurfaceKHR"));
    VkXcbSurfaceCreateInfoKHR info{};
    info.sType = VK_STRUCTURE_TYPE_XCB_SURFACE_CREATE_INFO_KHR;
    info.connection = connection_.get();
    info.window = window_;
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    return create != nullptr && create(instance, &info, nullptr, &surface) == VK_SUCCESS
               ? surface
               : VK_NULL_HANDLE;
}

void DesktopWindow::requestRefresh() {
    isRefreshWanted_ = true;
    if (visibility_ == Visibility::visible) {
        timer_.request();
    }
}

void DesktopWindow::due() {
    // One that is covered meanwhile asks again when it is seen.
    if (visibility_ == Visibility::visible && std::exchange(isRefreshWanted_, false)) {
        refresh_(*this);
    }
}

void DesktopWindow::follow(const Monitor& monitor) {
    const bool isElsewhere = monitor.place != monitor_.place;
    monitor_ = monitor;
    if (isElsewhere) {
        wasCorrected_ = false;
        width_ = monitor.place.width;
        height_ = monitor.place.height;
        move();
    }
}

void DesktopWindow::move() {
    const Rectangle& place = monitor_.place;
    const std::uint32_t values[] = {word(place.x), word(place.y), place.width, place.height};
    xcb_configure_window(connection_.get(), window_,
                         XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y | XCB_CONFIG_WINDOW_WIDTH |
                             XCB_CONFIG_WINDOW_HEIGHT,
                         values);
}

void DesktopWindow::take(const xcb_generic_event_t& event) {
    switch (event.response_type & 0x7F) {
    case XCB_VISIBILITY_NOTIFY:
        isObscured_ = reinterpret_cast<const xcb_visibility_notify_event_t&>(event).state ==
                      XCB_VISIBILITY_FULLY_OBSCURED;
        break;
    case XCB_MAP_NOTIFY:
        isMapped_ = true;
        break;
    case XCB_UNMAP_NOTIFY:
        isMapped_ = false;
        break;
    case XCB_EXPOSE:
        // The server kept nothing of what was hidden: it is to be shown again.
        isExposed_ = true;
        break;
    case XCB_CONFIGURE_NOTIFY: {
        const auto& notify = reinterpret_cast<const xcb_configure_notify_event_t&>(event);
        const Rectangle& place = monitor_.place;
        // Only a window manager's own event tells the place on the screen.
        const bool isSent = (event.response_type & 0x80) != 0;
        const bool isPlaced = !isSent || (notify.x == place.x && notify.y == place.y);
        const bool isSized = notify.width == place.width && notify.height == place.height;
        if ((!isPlaced || !isSized) && !std::exchange(wasCorrected_, true)) {
            move();
        } else {
            width_ = notify.width;
            height_ = notify.height;
        }
        break;
    }
    default:
        break;
    }
}

bool DesktopWindow::update(bool isBlanked, bool isFilled) {
    OutputDescription description = monitor_.description;
    description.width = width_;
    description.height = height_;
    const Visibility visibility = isBlanked                 ? Visibility::off
                                  : isFilled || isObscured_ ? Visibility::covered
                                                            : Visibility::visible;
    const bool isSame = description == description_ && visibility == visibility_;
    if (!std::exchange(isExposed_, false) && isSame) {
        return false;
    }
    description_ = std::move(description);
    visibility_ = visibility;
    timer_.setRate(description_.refreshRate);
    if (isRefreshWanted_) {
        requestRefresh();
    }
    return true;
}

} // namespace vantor::agent::x11
