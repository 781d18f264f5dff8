#pragma once
// What the extension offers and what the host application shows: names, paths, state, resolution of
// wallpapers, and the connections that are told of changes.

#include "library/connected_agent.h"
#include "library/desktop_state.h"
#include "library/identifiers.h"
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

/// Makes what the wallpaper picker shows, as the graph of a "WallpaperSettingsViewModels" record.
class SettingsViewModelComposer {
  public:
    virtual ~SettingsViewModelComposer() = default;
    /// Main thread.
    virtual PropertyList compose() = 0;
};

/// Main thread only, but for the handlers.
class LockScreenLibrary : public WallpaperResolver {
  public:
    using Resolved = vantor::Resolved;

    /// The one of the process, on the installed platform; made on first use, never destroyed. It is
    /// then also the installed resolver.
    static LockScreenLibrary& shared();

    /// Creates the folder of the thumbnails. The platform must outlive the library.
    explicit LockScreenLibrary(Platform& platform);
    LockScreenLibrary(const LockScreenLibrary&) = delete;
    LockScreenLibrary& operator=(const LockScreenLibrary&) = delete;

    const Identifiers& identifiers() const { return identifiers_; }
    const std::filesystem::path& appStateURL() const { return appStateURL_; }
    const std::filesystem::path& thumbnailDir() const { return thumbnailDir_; }

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

    /// Without a composer there are no view models. It must outlive the library.
    void setViewModelComposer(SettingsViewModelComposer* composer) { composer_ = composer; }
    /// The view models as the agent's own object; null when it cannot be made.
    ObjectRef archivedViewModels();

  private:
    Platform& platform_;
    const Identifiers identifiers_;
    const std::filesystem::path appStateURL_;
    const std::filesystem::path thumbnailDir_;
    std::optional<DesktopState> desktop_;
    SettingsViewModelComposer* composer_ = nullptr;

    /// Guards handlers_. Never held while an agent is called.
    std::mutex lock_;
    std::vector<std::weak_ptr<ConnectedAgent>> handlers_;
};

} // namespace vantor
