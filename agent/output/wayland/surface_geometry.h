#pragma once
// How many pixels a background has, from what the compositor says about its output. Any thread.

#include "agent/output/wayland/output_info.h"
#include "platform/result.h"

#include <cstdint>
#include <optional>
#include <string>

namespace vantor::agent::wayland {

/// No display has more pixels on a side, and no graphics device takes larger pictures for granted.
inline constexpr std::uint32_t kMaxSide = 16384;
/// Pixels in all; two displays of 8K side by side. A frame of that takes 256 MiB.
inline constexpr std::uint64_t kMaxPixels = std::uint64_t{1} << 26U;
inline constexpr double kMaxScale = 32;

/// What is known of a surface that fills an output.
struct SurfaceFacts {
    /// Points, as the compositor configured the surface.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// In 120ths; nothing where the compositor tells no fractional scale.
    std::optional<std::uint32_t> preferredScale;
    /// Whether a picture can be shown at another size than its own.
    bool hasViewport = false;
};

struct SurfaceGeometry {
    /// Points that the picture is shown on.
    std::uint32_t pointsWidth = 0;
    std::uint32_t pointsHeight = 0;
    /// Pixels of the picture.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Pixels per point.
    double scale = 1;
    /// What the surface is told; 1 where a viewport does it.
    std::int32_t bufferScale = 1;

    bool operator==(const SurfaceGeometry&) const = default;
};

/// One pixel of the picture for each of the display. The failure is a sentence about numbers that
/// make no picture.
Result<SurfaceGeometry, std::string> fitSurface(const OutputState& output,
                                                const SurfaceFacts& facts);

} // namespace vantor::agent::wayland
