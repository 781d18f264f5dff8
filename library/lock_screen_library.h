#pragma once
// What the extension offers and what the host application shows: names, paths, state, resolution of
// wallpapers, and the connections that are told of changes.

#include "bridge/settings_view_models.h"
#include "library/connected_agent.h"
#include "library/desktop_state.h"
#include "library/identifiers.h"
#include "library/thumbnails.h"
#include "render/resolved.h"
#include "shaders/shader_catalog.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

class Platform;
class ShaderGPU;

/// Main thread only, but for the handlers.
class LockScreenLibrary : public WallpaperResolver {
  public:
    using Resolved = vantor::Resolved;

    /// The one of the process, on the installed platform; made on first use, never destroyed. It is
    /// then also the installed resolver.
    static LockScreenLibrary& shared();

    /// Creates the folder of the thumbnails. Both must outlive the library.
    LockScreenLibrary(Platform& platform, ShaderGPU& gpu);
    LockScreenLibrary(const LockScreenLibrary&) = delete;
    LockScreenLibrary& operator=(const LockScreenLibrary&) = delete;

    const Identifiers& identifiers() const { return identifiers_; }
    const std::filesystem::path& appStateURL() const { return appStateURL_; }
    const std::filesystem::path& thumbnailDir() const { return thumbnails_.folder(); }

    /// Read from the state file on first use, and kept.
    const DesktopState& desktop();
    /// Reads the state file again.
    const DesktopState& rereadDesktop();

    /// The picture of an entry that has no shader, or nothing.
    std::optional<std::filesystem::path> stillURL(std::string_view id) const;

    std::optional<Resolved> resolve(const std::optional<std::string>& configuration,
                                    std::optional<std::uint32_t> displayID) override;
    /// What a catalog entry shows.
    Resolved resolve(const ShaderCatalog::Entry& entry) const;
    bool isNonShader(std::optional<std::uint32_t> displayID) override;

    /// Shown where the host application has nothing for a wallpaper that follows it.
    static const ShaderCatalog::Entry& matchFallback() { return ShaderCatalog::elecPCB; }

    /// The library holds a handler weakly. Any thread.
    void addHandler(const std::shared_ptr<ConnectedAgent>& handler);
    /// The handlers that are alive. Any thread.
    std::vector<std::shared_ptr<ConnectedAgent>> handlers();

    /// What the picker shows: one group that follows the host application first and then offers
    /// the catalog, alike for desktop and screen saver. Renders the thumbnails that are not there.
    SettingsViewModels viewModels();
    /// The thumbnail of what follows the main display, rendered when it is not there.
    std::filesystem::path matchThumbnailURL();
    /// The view models as the agent's own object; null when it cannot be made.
    ObjectRef archivedViewModels();

  private:
    Platform& platform_;
    const Identifiers identifiers_;
    const std::filesystem::path appStateURL_;
    Thumbnails thumbnails_;
    std::optional<DesktopState> desktop_;

    /// Guards handlers_. Never held while an agent is called.
    std::mutex lock_;
    std::vector<std::weak_ptr<ConnectedAgent>> handlers_;
};

} // namespace vantor
