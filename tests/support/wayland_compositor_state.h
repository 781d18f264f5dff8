#pragma once
// The objects of the tests' compositor and the requests that clients make of them. Everything here
// belongs to the compositor's thread.

#include "tests/support/wayland_compositor.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>
#include <wayland-server-core.h>

namespace vantor::tests {

struct ServerSurface;
class CompositorState;

/// Lives to the end, also when it was withdrawn: clients may hold on to their part of it.
struct ServerOutput {
    WaylandCompositor::Id id = 0;
    MonitorState state;
    bool isOn = true;
    wl_global* global = nullptr;
    std::vector<wl_resource*> resources;
    std::vector<wl_resource*> logicals;
    std::vector<wl_resource*> powers;
    /// The last that a client made here.
    ServerSurface* surface = nullptr;
};

struct ServerSurface {
    explicit ServerSurface(CompositorState& owner) : compositor(owner) {}

    CompositorState& compositor;
    wl_resource* resource = nullptr;
    wl_resource* layer = nullptr;
    wl_resource* viewport = nullptr;
    wl_resource* fractionalScale = nullptr;
    ServerOutput* output = nullptr;
    /// What the next commit makes `current`.
    SeenSurface pending;
    SeenSurface current;
    /// The buffer that the next commit shows, by its number with the client.
    std::optional<std::uint32_t> attached;
    std::vector<wl_resource*> pendingFrames;
    std::vector<wl_resource*> frames;
    std::uint32_t lastSerial = 0;
};

struct ServerWindow {
    WaylandCompositor::Id id = 0;
    std::vector<wl_resource*> handles;
};

class CompositorState {
  public:
    explicit CompositorState(const CompositorOffers& offers);
    ~CompositorState();
    CompositorState(const CompositorState&) = delete;
    CompositorState& operator=(const CompositorState&) = delete;

    wl_display* display() const { return display_; }
    /// Null where there is none of that number.
    ServerOutput* output(WaylandCompositor::Id id) const;
    ServerWindow* window(WaylandCompositor::Id id) const;

    void addOutput(WaylandCompositor::Id id, const MonitorState& told);
    void addWindow(WaylandCompositor::Id id);

    /// Everything about the output, to everybody who bound it.
    void tell(const ServerOutput& output) const;
    void configure(ServerSurface& surface, std::uint32_t width, std::uint32_t height);
    /// With the output's logical size, if the compositor does so by itself.
    void configureBySelf(ServerSurface& surface);
    void committed(ServerSurface& surface);
    void answerFrames(ServerSurface& surface);
    /// Makes the window known to who asks for windows.
    void announce(ServerWindow& window, wl_resource* manager) const;
    void violated(const std::string& sentence) { violations.push_back(sentence); }

    bool configuresBySelf = true;
    bool answersFrames = true;
    WaylandCompositor::Id lastId = 0;
    std::vector<std::unique_ptr<ServerOutput>> outputs;
    std::vector<std::unique_ptr<ServerSurface>> surfaces;
    std::vector<std::unique_ptr<ServerWindow>> windows;
    std::vector<wl_resource*> toplevelManagers;
    std::vector<std::string> violations;

  private:
    wl_display* const display_;
    const std::uint32_t outputVersion_;
    wl_event_source* frameTimer_ = nullptr;
    std::uint32_t serial_ = 0;
};

// What clients may bind; the data is the compositor's state, or the output.
void offerGlobals(CompositorState& state, const CompositorOffers& offers);
void bindOutput(wl_client* client, void* output, std::uint32_t version, std::uint32_t id);
wl_resource* makeWindowHandle(ServerWindow& window, wl_resource* manager);

// Events about an output, to one who bound it.
void sendOutput(wl_resource* resource, const MonitorState& told);
void sendLogical(wl_resource* resource, const MonitorState& told);
void sendMark(wl_resource* output);

} // namespace vantor::tests
