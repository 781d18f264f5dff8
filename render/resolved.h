#pragma once
// What one wallpaper shows, and who decides it.

#include "shaders/shader_uniforms.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace vantor {

struct Resolved {
    /// Stands for one pipeline: an entry's identifier, with "#" and a hash for a source of the host
    /// application, with "#still" for a still image.
    std::string key;
    /// Metal Shading Language; nothing when a still image is shown instead.
    std::optional<std::string> source;
    /// A picture file; only without a source, and only when there is one.
    std::optional<std::filesystem::path> still = std::nullopt;
    /// Resolution and time are filled in by whoever draws.
    ShaderUniforms uniforms = {};
};

/// Follows the host application's choice for its display; any other configuration is the
/// identifier of a catalog entry.
inline constexpr const char* kMatchDesktop = "match-desktop";

/// Asked by the registry what to show. Main thread.
class WallpaperResolver {
  public:
    virtual ~WallpaperResolver() = default;

    /// Nothing when no such wallpaper is offered.
    virtual std::optional<Resolved> resolve(const std::optional<std::string>& configuration,
                                            std::optional<std::uint32_t> displayID) = 0;

    /// Whether the host application shows something else than a shader on that display.
    virtual bool isNonShader(std::optional<std::uint32_t> displayID) = 0;

    /// The one that `SurfaceRegistry::shared` asks. Installed once, before that registry is used;
    /// it lives as long as the process.
    static void install(WallpaperResolver* resolver);
    /// Using it before one is installed stops the process.
    static WallpaperResolver& installed();
};

} // namespace vantor
