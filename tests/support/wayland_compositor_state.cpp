#include "tests/support/wayland_compositor_state.h"

#include <algorithm>
#include <wayland-server.h>
#include <wlr-foreign-toplevel-management-unstable-v1-server.h>
#include <wlr-layer-shell-unstable-v1-server.h>

namespace vantor::tests {
namespace {

/// From a commit to the answer to its frame callbacks, where the compositor gives one by itself.
constexpr int kFrameMilliseconds = 4;

std::uint32_t milliseconds() {
    static std::uint32_t time = 0;
    return ++time;
}

template <typename List>
auto find(const List& list, WaylandCompositor::Id id) {
    const auto found = std::ranges::find_if(list, [id](const auto& one) { return one->id == id; });
    return found == list.end() ? nullptr : found->get();
}

} // namespace

CompositorState::CompositorState(const CompositorOffers& offers)
    : display_(wl_display_create()), outputVersion_(offers.outputVersion) {
    wl_display_init_shm(display_);
    offerGlobals(*this, offers);
    frameTimer_ = wl_event_loop_add_timer(
        wl_display_get_event_loop(display_),
        [](void* data) {
            for (const auto& surface : static_cast<CompositorState*>(data)->surfaces) {
                static_cast<CompositorState*>(data)->answerFrames(*surface);
            }
            return 0;
        },
        this);
}

CompositorState::~CompositorState() {
    wl_display_destroy_clients(display_);
    wl_event_source_remove(frameTimer_);
    wl_display_destroy(display_);
}

ServerOutput* CompositorState::output(WaylandCompositor::Id id) const { return find(outputs, id); }

ServerWindow* CompositorState::window(WaylandCompositor::Id id) const { return find(windows, id); }

void CompositorState::addOutput(WaylandCompositor::Id id, const MonitorState& told) {
    ServerOutput& output = *outputs.emplace_back(std::make_unique<ServerOutput>());
    output.id = id;
    output.state = told;
    output.global = wl_global_create(display_, &wl_output_interface,
                                     static_cast<int>(outputVersion_), &output, bindOutput);
}

void CompositorState::addWindow(WaylandCompositor::Id id) {
    ServerWindow& window = *windows.emplace_back(std::make_unique<ServerWindow>());
    window.id = id;
    for (wl_resource* const manager : toplevelManagers) {
        announce(window, manager);
    }
}

void CompositorState::announce(ServerWindow& window, wl_resource* manager) const {
    wl_resource* const handle = makeWindowHandle(window, manager);
    window.handles.push_back(handle);
    zwlr_foreign_toplevel_manager_v1_send_toplevel(manager, handle);
    zwlr_foreign_toplevel_handle_v1_send_done(handle);
}

void CompositorState::tell(const ServerOutput& output) const {
    for (wl_resource* const resource : output.resources) {
        sendOutput(resource, output.state);
    }
    for (wl_resource* const resource : output.logicals) {
        sendLogical(resource, output.state);
    }
    std::ranges::for_each(output.resources, sendMark);
}

void CompositorState::configure(ServerSurface& surface, std::uint32_t width, std::uint32_t height) {
    if (surface.layer != nullptr) {
        surface.lastSerial = ++serial_;
        zwlr_layer_surface_v1_send_configure(surface.layer, serial_, width, height);
    }
}

void CompositorState::configureBySelf(ServerSurface& surface) {
    if (configuresBySelf && surface.output != nullptr) {
        configure(surface, static_cast<std::uint32_t>(surface.output->state.logicalWidth),
                  static_cast<std::uint32_t>(surface.output->state.logicalHeight));
    }
}

void CompositorState::committed(ServerSurface& surface) {
    SeenSurface& next = surface.pending;
    ++next.commits;
    if (surface.attached) {
        wl_resource* const buffer =
            wl_client_get_object(wl_resource_get_client(surface.resource), *surface.attached);
        wl_shm_buffer* const memory = buffer != nullptr ? wl_shm_buffer_get(buffer) : nullptr;
        next.buffer.reset();
        if (memory != nullptr) {
            next.buffer = {wl_shm_buffer_get_width(memory), wl_shm_buffer_get_height(memory)};
            // Nothing more is made of it.
            wl_buffer_send_release(buffer);
        }
        surface.attached.reset();
        if (next.buffer && surface.layer != nullptr && next.acknowledged == 0) {
            violated("a picture comes before the first configuration is acknowledged");
        }
    }
    if (next.buffer &&
        ((*next.buffer)[0] % next.bufferScale != 0 || (*next.buffer)[1] % next.bufferScale != 0)) {
        violated("a picture is no multiple of its scale");
    }
    surface.current = next;
    surface.frames.insert(surface.frames.end(), surface.pendingFrames.begin(),
                          surface.pendingFrames.end());
    surface.pendingFrames.clear();
    if (surface.layer != nullptr && surface.lastSerial == 0) {
        configureBySelf(surface);
    }
    if (answersFrames && !surface.frames.empty()) {
        wl_event_source_timer_update(frameTimer_, kFrameMilliseconds);
    }
}

void CompositorState::answerFrames(ServerSurface& surface) {
    // Each takes itself off the list.
    for (wl_resource* const callback : std::vector(surface.frames)) {
        wl_callback_send_done(callback, milliseconds());
        wl_resource_destroy(callback);
    }
}

} // namespace vantor::tests
