#pragma once
// Where wallpapers are shown: the outputs of a display server, or pictures in memory. A backend
// announces its outputs and tells when each may show the next frame; what is shown is drawn
// elsewhere. Main thread; events come from the loop, never from within a call.

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>
#include <vulkan/vulkan.h>

namespace vantor::agent {

struct Picture;

struct OutputDescription {
    /// As the display server calls it ("DP-1"); unique among the outputs that there are.
    std::string connector;
    /// Empty where the display server tells none.
    std::string make = {};
    std::string model = {};
    /// Pixels, as the picture is seen: a display that is turned has them exchanged.
    std::uint32_t width = 1280;
    std::uint32_t height = 720;
    /// Pixels per point.
    double scale = 1.0;
    /// Hertz.
    double refreshRate = 60.0;

    bool operator==(const OutputDescription&) const = default;
};

enum class Visibility {
    visible,
    /// A window that fills the output lies over it.
    covered,
    /// The display is switched off, or the window is hidden.
    off,
};

/// What a person asks for with a key of a window.
enum class WindowCommand { toggleLock, toggleIdle, toggleSuspend, nextWallpaper, quit };

class Output {
  public:
    virtual ~Output() = default;
    virtual const OutputDescription& description() const = 0;
    virtual Visibility visibility() const = 0;

    /// A new Vulkan surface to show frames on, which the caller destroys before the output goes.
    /// VK_NULL_HANDLE when there is none: `isInMemory`, or the display server gives none.
    virtual VkSurfaceKHR makeSurface(VkInstance instance) = 0;
    /// Frames of this output are kept in memory and presented nowhere.
    virtual bool isInMemory() const = 0;

    /// Asks for one `refresh` event, at the next moment in which the output can take a frame. Asked
    /// while one is awaited it changes nothing. An output that nobody can see sends none until it
    /// can be seen again.
    virtual void requestRefresh() = 0;
    /// As `requestRefresh`, for a frame that is presented on the surface right after this call:
    /// what belongs to the frame goes with it.
    virtual void willPresent() = 0;

    /// A picture to lie over the wallpaper's top left corner, in pixels; null for none. Valid until
    /// the next `changed`.
    virtual const Picture* overlay() const { return nullptr; }
};

struct OutputEvents {
    /// An output is there, with a size. Also for those that are there at the start.
    std::function<void(Output&)> added;
    /// The description, the visibility or the overlay is another one, or the display server has
    /// lost the picture.
    std::function<void(Output&)> changed;
    /// The output goes when this returns.
    std::function<void(Output&)> removed;
    /// The moment that was asked for.
    std::function<void(Output&)> refresh;
    /// Only windows send some.
    std::function<void(Output&, WindowCommand)> command;
    /// The display server is gone, for the reason that the sentence gives; `removed` was called for
    /// every output. Nothing is called after this.
    std::function<void(const std::string& why)> ended;
};

/// Destruction calls no event and leaves nothing on the display.
class OutputBackend {
  public:
    virtual ~OutputBackend() = default;
    /// "headless", "window", "background".
    virtual std::string_view kind() const = 0;
};

} // namespace vantor::agent
