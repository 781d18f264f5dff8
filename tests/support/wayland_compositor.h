#pragma once
// A Wayland compositor that draws nothing and does what a test tells it to, well or badly. It runs
// on a thread of its own; calls may come from any one other thread, and return when they are done
// and sent.

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

struct wl_resource;

namespace vantor::tests {

/// What the compositor offers beside surfaces and shared memory.
struct CompositorOffers {
    bool layerShell = true;
    bool viewporter = true;
    bool fractionalScales = false;
    bool outputManager = true;
    bool outputPowers = true;
    bool toplevels = true;
    /// Versions before 4 tell no name, those before 2 mark no end.
    std::uint32_t outputVersion = 4;
};

/// What it says about an output. Nothing is checked.
struct MonitorState {
    std::string name = "DP-1";
    std::string make = "Maker";
    std::string model = "Model";
    std::int32_t width = 1920;
    std::int32_t height = 1080;
    /// Thousandths of a hertz.
    std::int32_t refresh = 60000;
    std::int32_t transform = 0;
    std::int32_t scale = 1;
    std::int32_t logicalWidth = 1920;
    std::int32_t logicalHeight = 1080;
};

/// What a client did with the surface on an output, as of its last commit.
struct SeenSurface {
    std::string nameSpace;
    std::uint32_t layer = 0;
    std::uint32_t anchor = 0;
    std::int32_t exclusiveZone = 0;
    std::uint32_t keyboard = 0;
    bool takesNoInput = false;
    /// Width and height from the top left corner; nothing where nothing is opaque.
    std::optional<std::array<std::int32_t, 2>> opaque;
    std::optional<std::array<std::int32_t, 2>> destination;
    std::int32_t bufferScale = 1;
    int commits = 0;
    /// The size of the picture; nothing without one.
    std::optional<std::array<std::int32_t, 2>> buffer;
    /// Frame callbacks that were committed and not answered.
    std::size_t awaitedFrames = 0;
    /// Serials of the last configuration that it answered, and that it was sent.
    std::uint32_t acknowledged = 0;
    std::uint32_t configured = 0;
};

class CompositorState;
struct ServerSurface;

class WaylandCompositor {
  public:
    using Id = std::uint32_t;

    /// Listens at `socket()`. A failure throws.
    explicit WaylandCompositor(const CompositorOffers& offers = {});
    /// Closes every connection.
    ~WaylandCompositor();
    WaylandCompositor(const WaylandCompositor&) = delete;
    WaylandCompositor& operator=(const WaylandCompositor&) = delete;

    /// An absolute path, which WAYLAND_DISPLAY may be.
    std::filesystem::path socket() const;

    // Outputs. An Id is never given twice; what is told of one that is gone is told nobody.
    Id addOutput(const MonitorState& state = {});
    /// Withdraws the output; its surface is closed only by `close`.
    void removeOutput(Id output);
    /// Tells the new state, and configures the surface with it where `configuresBySelf`.
    void changeOutput(Id output, const MonitorState& state);
    /// Marks the end of a state that was marked already.
    void sendDone(Id output);
    void setPower(Id output, bool isOn);
    void failPower(Id output);

    // Surfaces, by the output that they are on.
    /// Whether a surface's first commit and changes of the output are answered with the output's
    /// logical size. So it is at first.
    void setConfiguresBySelf(bool configures);
    void configure(Id output, std::uint32_t width, std::uint32_t height);
    void close(Id output);
    void setPreferredScale(Id output, std::uint32_t scale);
    /// Whether frame callbacks are answered soon after their commit. So it is at first.
    void setAnswersFrames(bool answers);
    void answerFrames(Id output);
    /// Nothing while there is no surface on the output.
    std::optional<SeenSurface> surface(Id output) const;

    // Windows of other programs.
    Id openWindow();
    void enterOutput(Id window, Id output);
    void leaveOutput(Id window, Id output);
    /// States as the protocol numbers them.
    void setWindowStates(Id window, const std::vector<std::uint32_t>& states);
    void closeWindow(Id window);
    void finishToplevels();

    // Ends.
    void disconnect();
    /// On the surface that lies on the output.
    void sendProtocolError(Id output);

    /// Connections that there are.
    int clients() const;
    /// What clients did against the protocols' rules, as sentences.
    std::vector<std::string> violations() const;

  private:
    class Thread;

    /// Does nothing where there is no surface.
    void withSurface(Id output,
                     const std::function<void(CompositorState&, ServerSurface&)>& work) const;
    void passOutput(Id window, Id output, void (*send)(wl_resource*, wl_resource*));

    std::unique_ptr<Thread> thread_;
};

} // namespace vantor::tests
