// What clients can ask of the tests' compositor.

#include "tests/support/wayland_compositor_state.h"

#include <algorithm>
#include <fractional-scale-v1-server.h>
#include <viewporter-server.h>
#include <wayland-server.h>
#include <wlr-foreign-toplevel-management-unstable-v1-server.h>
#include <wlr-layer-shell-unstable-v1-server.h>
#include <wlr-output-power-management-unstable-v1-server.h>
#include <xdg-output-unstable-v1-server.h>

namespace vantor::tests {
namespace {

template <typename T>
T& of(wl_resource* resource) {
    return *static_cast<T*>(wl_resource_get_user_data(resource));
}

/// Null where the object that the resource stood for went first.
template <typename T>
T* ifThere(wl_resource* resource) {
    return static_cast<T*>(wl_resource_get_user_data(resource));
}

/// A request that changes nothing here.
template <typename... Arguments>
void ignore(wl_client*, wl_resource*, Arguments...) {}

void destroyResource(wl_client*, wl_resource* resource) { wl_resource_destroy(resource); }

wl_resource* make(wl_client* client, const wl_interface& interface, wl_resource* parent,
                  std::uint32_t id) {
    return wl_resource_create(client, &interface, wl_resource_get_version(parent), id);
}

// Regions.

struct Region {
    /// Of the last rectangle that was added.
    std::optional<std::array<std::int32_t, 2>> size;
};

const struct wl_region_interface kRegion = {
    .destroy = destroyResource,
    .add =
        [](wl_client*, wl_resource* resource, std::int32_t, std::int32_t, std::int32_t width,
           std::int32_t height) {
            of<Region>(resource).size = {width, height};
        },
    .subtract = ignore,
};

// Surfaces.

void frameGoes(wl_resource* callback) {
    if (auto* const surface = ifThere<ServerSurface>(callback)) {
        std::erase(surface->frames, callback);
        std::erase(surface->pendingFrames, callback);
    }
}

const struct wl_surface_interface kSurface = {
    .destroy = destroyResource,
    .attach =
        [](wl_client*, wl_resource* resource, wl_resource* buffer, std::int32_t, std::int32_t) {
            of<ServerSurface>(resource).attached =
                buffer != nullptr ? wl_resource_get_id(buffer) : 0;
        },
    .damage = ignore,
    .frame =
        [](wl_client* client, wl_resource* resource, std::uint32_t id) {
            wl_resource* const callback = make(client, wl_callback_interface, resource, id);
            auto& surface = of<ServerSurface>(resource);
            wl_resource_set_implementation(callback, nullptr, &surface, frameGoes);
            surface.pendingFrames.push_back(callback);
        },
    .set_opaque_region =
        [](wl_client*, wl_resource* resource, wl_resource* region) {
            of<ServerSurface>(resource).pending.opaque =
                region != nullptr ? of<Region>(region).size : std::nullopt;
        },
    .set_input_region =
        [](wl_client*, wl_resource* resource, wl_resource* region) {
            of<ServerSurface>(resource).pending.takesNoInput =
                region != nullptr && !of<Region>(region).size;
        },
    .commit =
        [](wl_client*, wl_resource* resource) {
            auto& surface = of<ServerSurface>(resource);
            surface.compositor.committed(surface);
        },
    .set_buffer_transform = ignore,
    .set_buffer_scale =
        [](wl_client*, wl_resource* resource, std::int32_t scale) {
            of<ServerSurface>(resource).pending.bufferScale = scale;
        },
    .damage_buffer = ignore,
    .offset = ignore,
};

/// A part of a surface goes before it, or after.
template <auto Part>
void partGoes(wl_resource* resource) {
    if (auto* const surface = ifThere<ServerSurface>(resource)) {
        surface->*Part = nullptr;
    }
}

void surfaceGoes(wl_resource* resource) {
    auto& surface = of<ServerSurface>(resource);
    if (surface.output != nullptr && surface.output->surface == &surface) {
        surface.output->surface = nullptr;
    }
    for (const auto& list : {surface.frames, surface.pendingFrames}) {
        for (wl_resource* const callback : list) {
            wl_resource_set_user_data(callback, nullptr);
        }
    }
    for (wl_resource* const part : {surface.layer, surface.viewport, surface.fractionalScale}) {
        if (part != nullptr) {
            wl_resource_set_user_data(part, nullptr);
        }
    }
    auto& surfaces = surface.compositor.surfaces;
    std::erase_if(surfaces, [&](const auto& other) { return other.get() == &surface; });
}

const struct wl_compositor_interface kCompositor = {
    .create_surface =
        [](wl_client* client, wl_resource* resource, std::uint32_t id) {
            auto& state = of<CompositorState>(resource);
            auto& surface = *state.surfaces.emplace_back(std::make_unique<ServerSurface>(state));
            surface.resource = make(client, wl_surface_interface, resource, id);
            wl_resource_set_implementation(surface.resource, &kSurface, &surface, surfaceGoes);
        },
    .create_region =
        [](wl_client* client, wl_resource* resource, std::uint32_t id) {
            wl_resource_set_implementation(make(client, wl_region_interface, resource, id),
                                           &kRegion, new Region,
                                           [](wl_resource* gone) { delete ifThere<Region>(gone); });
        },
};

// Layers.

const struct zwlr_layer_surface_v1_interface kLayerSurface = {
    .set_size = ignore,
    .set_anchor = [](wl_client*, wl_resource* resource,
                     std::uint32_t anchor) { of<ServerSurface>(resource).pending.anchor = anchor; },
    .set_exclusive_zone =
        [](wl_client*, wl_resource* resource, std::int32_t zone) {
            of<ServerSurface>(resource).pending.exclusiveZone = zone;
        },
    .set_margin = ignore,
    .set_keyboard_interactivity =
        [](wl_client*, wl_resource* resource, std::uint32_t keyboard) {
            of<ServerSurface>(resource).pending.keyboard = keyboard;
        },
    .get_popup = ignore,
    .ack_configure =
        [](wl_client*, wl_resource* resource, std::uint32_t serial) {
            auto& surface = of<ServerSurface>(resource);
            if (serial <= surface.pending.acknowledged || serial > surface.lastSerial) {
                surface.compositor.violated("configuration " + std::to_string(serial) +
                                            " is acknowledged, which was not sent, or twice");
            }
            surface.pending.acknowledged = serial;
        },
    .destroy = destroyResource,
    .set_layer = ignore,
};

const struct zwlr_layer_shell_v1_interface kLayerShell = {
    .get_layer_surface =
        [](wl_client* client, wl_resource* resource, std::uint32_t id, wl_resource* surfaceResource,
           wl_resource* output, std::uint32_t layer, const char* nameSpace) {
            auto& surface = of<ServerSurface>(surfaceResource);
            if (surface.layer != nullptr) {
                surface.compositor.violated("a surface becomes a layer twice");
            }
            surface.layer = make(client, zwlr_layer_surface_v1_interface, resource, id);
            surface.pending.layer = layer;
            surface.pending.nameSpace = nameSpace;
            if (output != nullptr) {
                surface.output = &of<ServerOutput>(output);
                surface.output->surface = &surface;
            }
            wl_resource_set_implementation(surface.layer, &kLayerSurface, &surface,
                                           partGoes<&ServerSurface::layer>);
        },
    .destroy = destroyResource,
};

// Sizes of pictures.

const struct wp_viewport_interface kViewport = {
    .destroy = destroyResource,
    .set_source = ignore,
    .set_destination =
        [](wl_client*, wl_resource* resource, std::int32_t width, std::int32_t height) {
            auto& surface = of<ServerSurface>(resource);
            if (width <= 0 || height <= 0) {
                surface.compositor.violated("a viewport is " + std::to_string(width) + "x" +
                                            std::to_string(height));
            }
            surface.pending.destination = {width, height};
        },
};

const struct wp_viewporter_interface kViewporter = {
    .destroy = destroyResource,
    .get_viewport =
        [](wl_client* client, wl_resource* resource, std::uint32_t id,
           wl_resource* surfaceResource) {
            auto& surface = of<ServerSurface>(surfaceResource);
            surface.viewport = make(client, wp_viewport_interface, resource, id);
            wl_resource_set_implementation(surface.viewport, &kViewport, &surface,
                                           partGoes<&ServerSurface::viewport>);
        },
};

const struct wp_fractional_scale_v1_interface kFractionalScale = {.destroy = destroyResource};

const struct wp_fractional_scale_manager_v1_interface kFractionalScales = {
    .destroy = destroyResource,
    .get_fractional_scale =
        [](wl_client* client, wl_resource* resource, std::uint32_t id,
           wl_resource* surfaceResource) {
            auto& surface = of<ServerSurface>(surfaceResource);
            surface.fractionalScale = make(client, wp_fractional_scale_v1_interface, resource, id);
            wl_resource_set_implementation(surface.fractionalScale, &kFractionalScale, &surface,
                                           partGoes<&ServerSurface::fractionalScale>);
        },
};

// Outputs.

const struct wl_output_interface kOutput = {.release = destroyResource};

const struct zxdg_output_v1_interface kLogicalOutput = {.destroy = destroyResource};

const struct zxdg_output_manager_v1_interface kOutputManager = {
    .destroy = destroyResource,
    .get_xdg_output =
        [](wl_client* client, wl_resource* resource, std::uint32_t id,
           wl_resource* outputResource) {
            auto& output = of<ServerOutput>(outputResource);
            wl_resource* const logical = make(client, zxdg_output_v1_interface, resource, id);
            wl_resource_set_implementation(
                logical, &kLogicalOutput, &output,
                [](wl_resource* gone) { std::erase(of<ServerOutput>(gone).logicals, gone); });
            output.logicals.push_back(logical);
            sendLogical(logical, output.state);
            sendMark(outputResource);
        },
};

const struct zwlr_output_power_v1_interface kOutputPower = {
    .set_mode = ignore,
    .destroy = destroyResource,
};

const struct zwlr_output_power_manager_v1_interface kOutputPowers = {
    .get_output_power =
        [](wl_client* client, wl_resource* resource, std::uint32_t id,
           wl_resource* outputResource) {
            auto& output = of<ServerOutput>(outputResource);
            wl_resource* const power = make(client, zwlr_output_power_v1_interface, resource, id);
            wl_resource_set_implementation(power, &kOutputPower, &output, [](wl_resource* gone) {
                std::erase(of<ServerOutput>(gone).powers, gone);
            });
            output.powers.push_back(power);
            zwlr_output_power_v1_send_mode(power, output.isOn ? 1 : 0);
        },
    .destroy = destroyResource,
};

// Windows.

const struct zwlr_foreign_toplevel_handle_v1_interface kWindow = {
    .set_maximized = ignore,
    .unset_maximized = ignore,
    .set_minimized = ignore,
    .unset_minimized = ignore,
    .activate = ignore,
    .close = ignore,
    .set_rectangle = ignore,
    .destroy = destroyResource,
    .set_fullscreen = ignore,
    .unset_fullscreen = ignore,
};

const struct zwlr_foreign_toplevel_manager_v1_interface kWindows = {
    .stop = ignore,
};

/// Binds what needs nothing but the compositor's state.
template <const wl_interface* Interface, auto* Requests>
void bindGlobal(wl_client* client, void* state, std::uint32_t version, std::uint32_t id) {
    wl_resource_set_implementation(
        wl_resource_create(client, Interface, static_cast<int>(version), id), Requests, state,
        nullptr);
}

void bindWindows(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
    auto& state = *static_cast<CompositorState*>(data);
    wl_resource* const manager = wl_resource_create(
        client, &zwlr_foreign_toplevel_manager_v1_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(manager, &kWindows, &state, [](wl_resource* gone) {
        std::erase(of<CompositorState>(gone).toplevelManagers, gone);
    });
    state.toplevelManagers.push_back(manager);
    for (const auto& window : state.windows) {
        state.announce(*window, manager);
    }
}

} // namespace

wl_resource* makeWindowHandle(ServerWindow& window, wl_resource* manager) {
    wl_resource* const handle = make(wl_resource_get_client(manager),
                                     zwlr_foreign_toplevel_handle_v1_interface, manager, 0);
    wl_resource_set_implementation(handle, &kWindow, &window, [](wl_resource* gone) {
        std::erase(of<ServerWindow>(gone).handles, gone);
    });
    return handle;
}

void bindOutput(wl_client* client, void* data, std::uint32_t version, std::uint32_t id) {
    auto& output = *static_cast<ServerOutput*>(data);
    wl_resource* const resource =
        wl_resource_create(client, &wl_output_interface, static_cast<int>(version), id);
    wl_resource_set_implementation(resource, &kOutput, &output, [](wl_resource* gone) {
        std::erase(of<ServerOutput>(gone).resources, gone);
    });
    output.resources.push_back(resource);
    sendOutput(resource, output.state);
    sendMark(resource);
}

void offerGlobals(CompositorState& state, const CompositorOffers& offers) {
    const auto offer = [&](bool offered, const wl_interface& interface, int version,
                           wl_global_bind_func_t bind) {
        if (offered) {
            wl_global_create(state.display(), &interface, version, &state, bind);
        }
    };
    offer(true, wl_compositor_interface, 4, bindGlobal<&wl_compositor_interface, &kCompositor>);
    offer(offers.layerShell, zwlr_layer_shell_v1_interface, 4,
          bindGlobal<&zwlr_layer_shell_v1_interface, &kLayerShell>);
    offer(offers.viewporter, wp_viewporter_interface, 1,
          bindGlobal<&wp_viewporter_interface, &kViewporter>);
    offer(offers.fractionalScales, wp_fractional_scale_manager_v1_interface, 1,
          bindGlobal<&wp_fractional_scale_manager_v1_interface, &kFractionalScales>);
    offer(offers.outputManager, zxdg_output_manager_v1_interface, 3,
          bindGlobal<&zxdg_output_manager_v1_interface, &kOutputManager>);
    offer(offers.outputPowers, zwlr_output_power_manager_v1_interface, 1,
          bindGlobal<&zwlr_output_power_manager_v1_interface, &kOutputPowers>);
    offer(offers.toplevels, zwlr_foreign_toplevel_manager_v1_interface, 3, bindWindows);
}

void sendOutput(wl_resource* resource, const MonitorState& told) {
    wl_output_send_geometry(resource, 0, 0, 600, 340, WL_OUTPUT_SUBPIXEL_UNKNOWN, told.make.c_str(),
                            told.model.c_str(), told.transform);
    wl_output_send_mode(resource, WL_OUTPUT_MODE_CURRENT, told.width, told.height, told.refresh);
    const int version = wl_resource_get_version(resource);
    if (version >= WL_OUTPUT_SCALE_SINCE_VERSION) {
        wl_output_send_scale(resource, told.scale);
    }
    if (version >= WL_OUTPUT_NAME_SINCE_VERSION) {
        wl_output_send_name(resource, told.name.c_str());
    }
}

void sendLogical(wl_resource* resource, const MonitorState& told) {
    zxdg_output_v1_send_logical_size(resource, told.logicalWidth, told.logicalHeight);
    zxdg_output_v1_send_name(resource, told.name.c_str());
}

void sendMark(wl_resource* output) {
    if (wl_resource_get_version(output) >= WL_OUTPUT_DONE_SINCE_VERSION) {
        wl_output_send_done(output);
    }
}

} // namespace vantor::tests
