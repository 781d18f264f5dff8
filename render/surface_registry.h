#pragma once
// Every live wallpaper by its identifier: what it shows, whether it plays, and when it goes. Main
// thread only.

#include "bridge/remote_context.h"
#include "platform/layers.h"
#include "platform/main_queue.h"
#include "platform/platform.h"
#include "platform/uuid.h"
#include "render/resolved.h"
#include "render/shader_gpu.h"
#include "render/shader_surface.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>

namespace vantor {

class SurfaceRegistry {
  public:
    /// How long a released surface waits to be acquired again, in seconds.
    static constexpr double kTeardownGrace = 15.0;
    /// Animation time at which a paused wallpaper shows its one frame, in seconds.
    static constexpr double kPausedStartTime = 12.0;
    /// A playing wallpaper starts at a random animation time below this, in seconds.
    static constexpr double kMaxStartTime = 600.0;

    /// One wallpaper instance.
    struct Surface {
        /// Shows `root` in the agent.
        const std::shared_ptr<PrivateBridge::RemoteContext> context;
        /// Sized by whoever acquired the surface.
        const LayerRef root;
        const std::optional<std::uint32_t> displayID;
        const bool isPreview = false;
        std::string presentationMode;
        std::string activityState;

        std::shared_ptr<ShaderSurface> shader{};
        /// A still image or the backdrop.
        LayerRef still{};
        /// The configuration that the agent chose.
        std::optional<std::string> choice{};
        /// The key of what is shown, or "#backdrop".
        std::optional<std::string> entryID{};
        std::shared_ptr<WorkItem> teardown{};
    };
    using SurfaceRef = std::shared_ptr<Surface>;
    using Surfaces = std::map<UUID, SurfaceRef>;

    /// The one of the process, on the installed platform and the installed resolver; made on first
    /// use, never destroyed.
    static SurfaceRegistry& shared();

    /// The three must outlive the registry. Tests that let thousands of surfaces come and go
    /// shorten the grace period.
    SurfaceRegistry(Platform& platform, ShaderGPU& gpu, WallpaperResolver& resolver,
                    double teardownGrace = kTeardownGrace);
    SurfaceRegistry(const SurfaceRegistry&) = delete;
    SurfaceRegistry& operator=(const SurfaceRegistry&) = delete;

    const Surfaces& surfaces() const { return surfaces_; }
    /// Null when there is none.
    SurfaceRef surface(const UUID& id) const;
    /// Registers a surface in place of one that has the identifier.
    void add(const UUID& id, SurfaceRef surface);

    bool screenLocked() const { return screenLocked_; }
    /// Takes effect with the next `applyPolicy`.
    void setScreenLocked(bool locked) { screenLocked_ = locked; }

    /// Fills the surface's root with what its choice resolves to. The same entry again only takes
    /// the new look.
    void present(Surface& surface);
    /// Whether the surface's animation can be seen.
    bool shouldPlay(const Surface& surface) const;
    /// Presents what follows the desktop again and plays or pauses every surface.
    void applyPolicy();
    void refreshAll();
    /// Gives what the root shows another size (points) and scale; the root is the caller's.
    void resize(Surface& surface, const Size& size, double scale);

    /// Pauses the surface and lets it go after the grace period. Unknown identifiers are ignored.
    void scheduleTeardown(const UUID& id);
    /// Keeps a surface that was about to go.
    void cancelTeardown(const UUID& id);

  private:
    bool showsBackdrop(const Surface& surface) const;
    void showBackdrop(Surface& surface) const;
    void clear(Surface& surface) const;
    void showShader(Surface& surface, const Resolved& resolved);
    /// False when the file cannot be decoded.
    bool showStill(Surface& surface, const std::filesystem::path& file) const;
    void tearDown(const UUID& id);

    Platform& platform_;
    ShaderGPU& gpu_;
    WallpaperResolver& resolver_;
    Surfaces surfaces_;
    double teardownGrace_;
    bool screenLocked_ = false;
    std::mt19937_64 random_;
    /// Pending teardowns hold it weakly: they do nothing when the registry is gone.
    const std::shared_ptr<SurfaceRegistry*> alive_;
};

} // namespace vantor
