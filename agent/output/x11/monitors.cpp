#include "agent/output/x11/monitors.h"

#include "agent/output/x11/edid.h"
#include "agent/output/x11/reply.h"

#include <span>
#include <xcb/randr.h>

namespace vantor::agent::x11 {
namespace {

constexpr double kUsualRate = 60;
constexpr std::uint32_t kMaxEDIDWords = 64;

using Resources = Owned<xcb_randr_get_screen_resources_current_reply_t>;

double rateOf(const xcb_randr_mode_info_t& mode) {
    double lines = mode.vtotal;
    if ((mode.mode_flags & XCB_RANDR_MODE_FLAG_DOUBLE_SCAN) != 0) {
        lines *= 2;
    }
    if ((mode.mode_flags & XCB_RANDR_MODE_FLAG_INTERLACE) != 0) {
        lines /= 2;
    }
    const double pixels = lines * mode.htotal;
    return pixels > 0 && mode.dot_clock > 0 ? mode.dot_clock / pixels : kUsualRate;
}

double rateOf(const Connection& connection, const Resources& resources, xcb_randr_output_t output) {
    xcb_connection_t* const xcb = connection.get();
    const auto info = owned(xcb_randr_get_output_info_reply(
        xcb, xcb_randr_get_output_info(xcb, output, resources->config_timestamp), nullptr));
    if (!info || info->crtc == XCB_NONE) {
        return kUsualRate;
    }
    const auto crtc = owned(xcb_randr_get_crtc_info_reply(
        xcb, xcb_randr_get_crtc_info(xcb, info->crtc, resources->config_timestamp), nullptr));
    const std::span modes(
        xcb_randr_get_screen_resources_current_modes(resources.get()),
        static_cast<std::size_t>(
            xcb_randr_get_screen_resources_current_modes_length(resources.get())));
    for (const xcb_randr_mode_info_t& mode : modes) {
        if (crtc && mode.id == crtc->mode) {
            return rateOf(mode);
        }
    }
    return kUsualRate;
}

DisplayName nameOf(const Connection& connection, xcb_randr_output_t output) {
    const auto reply = owned(xcb_randr_get_output_property_reply(
        connection.get(),
        xcb_randr_get_output_property(connection.get(), output, connection.atom(Atom::edid),
                                      XCB_ATOM_ANY, 0, kMaxEDIDWords, 0, 0),
        nullptr));
    if (!reply || reply->format != 8) {
        return {};
    }
    return parseEDID(
        {xcb_randr_get_output_property_data(reply.get()),
         static_cast<std::size_t>(xcb_randr_get_output_property_data_length(reply.get()))});
}

} // namespace

bool Rectangle::contains(const Rectangle& other) const {
    const auto right = [](const Rectangle& each) { return std::int64_t{each.x} + each.width; };
    const auto bottom = [](const Rectangle& each) { return std::int64_t{each.y} + each.height; };
    return x <= other.x && y <= other.y && right(*this) >= right(other) &&
           bottom(*this) >= bottom(other);
}

bool watchMonitors(const Connection& connection) {
    xcb_connection_t* const xcb = connection.get();
    const xcb_query_extension_reply_t* const extension = xcb_get_extension_data(xcb, &xcb_randr_id);
    if (extension == nullptr || extension->present == 0) {
        return false;
    }
    const auto version =
        owned(xcb_randr_query_version_reply(xcb, xcb_randr_query_version(xcb, 1, 5), nullptr));
    if (!version || version->major_version != 1 || version->minor_version < 5) {
        return false;
    }
    xcb_randr_select_input(xcb, connection.root(),
                           XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE |
                               XCB_RANDR_NOTIFY_MASK_OUTPUT_CHANGE);
    return true;
}

std::vector<Monitor> readMonitors(const Connection& connection, double scale) {
    xcb_connection_t* const xcb = connection.get();
    const auto monitors = owned(xcb_randr_get_monitors_reply(
        xcb, xcb_randr_get_monitors(xcb, connection.root(), 1), nullptr));
    const Resources resources = owned(xcb_randr_get_screen_resources_current_reply(
        xcb, xcb_randr_get_screen_resources_current(xcb, connection.root()), nullptr));
    if (!monitors || !resources) {
        return {};
    }
    std::vector<Monitor> found;
    for (auto each = xcb_randr_get_monitors_monitors_iterator(monitors.get()); each.rem > 0;
         xcb_randr_monitor_info_next(&each)) {
        const xcb_randr_monitor_info_t& info = *each.data;
        if (info.width == 0 || info.height == 0) {
            continue;
        }
        Monitor monitor{
            .place = {.x = info.x, .y = info.y, .width = info.width, .height = info.height},
            .description = {.connector = connection.nameOf(info.name),
                            .width = info.width,
                            .height = info.height,
                            .scale = scale,
                            .refreshRate = kUsualRate}};
        if (info.nOutput > 0) {
            const xcb_randr_output_t output = xcb_randr_monitor_info_outputs(&info)[0];
            DisplayName name = nameOf(connection, output);
            monitor.description.make = std::move(name.make);
            monitor.description.model = std::move(name.model);
            monitor.description.refreshRate = rateOf(connection, resources, output);
        }
        found.push_back(std::move(monitor));
    }
    return found;
}

} // namespace vantor::agent::x11
