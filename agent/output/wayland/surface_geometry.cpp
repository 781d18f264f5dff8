#include "agent/output/wayland/surface_geometry.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vantor::agent::wayland {
namespace {

/// Compositors reckon scales in these (the fractional-scale protocol; wlroots rounds to them).
constexpr double kScaleSteps = 120;

/// Pixels per point on each axis, which differ by the rounding of points.
struct Scale {
    double x = 1;
    double y = 1;
};

bool isPositive(const Extent& extent) { return extent.width > 0 && extent.height > 0; }

/// The mode's size as the picture is seen.
Extent turned(const Extent& mode, std::int32_t transform) {
    switch (transform) {
    case WL_OUTPUT_TRANSFORM_90:
    case WL_OUTPUT_TRANSFORM_270:
    case WL_OUTPUT_TRANSFORM_FLIPPED_90:
    case WL_OUTPUT_TRANSFORM_FLIPPED_270:
        return {mode.height, mode.width};
    default:
        return mode;
    }
}

/// The scale at which the output's mode fills its points; nothing where the two do not belong
/// together.
std::optional<Scale> scaleOfMode(const OutputState& output, const SurfaceFacts& facts) {
    const Extent points = output.logicalSize.value_or(
        Extent{static_cast<std::int32_t>(facts.width), static_cast<std::int32_t>(facts.height)});
    const Extent pixels = turned(output.mode.value_or(Extent{}), output.transform);
    if (!isPositive(points) || !isPositive(pixels)) {
        return std::nullopt;
    }
    const Scale scale = {static_cast<double>(pixels.width) / points.width,
                         static_cast<double>(pixels.height) / points.height};
    // Either number of points may be a rounded one.
    const double rounding = scale.x / points.width + scale.y / points.height;
    if (std::abs(scale.x - scale.y) > rounding || std::max(scale.x, scale.y) > kMaxScale) {
        return std::nullopt;
    }
    return scale;
}

/// What the output itself says, in whole numbers.
std::int32_t wholeScale(const OutputState& output) {
    const bool isSensible = output.scale >= 1 && output.scale <= static_cast<int>(kMaxScale);
    return isSensible ? output.scale : 1;
}

Scale chooseScale(const OutputState& output, const SurfaceFacts& facts) {
    if (facts.hasViewport) {
        const double preferred = facts.preferredScale.value_or(0) / kScaleSteps;
        if (preferred > 0 && preferred <= kMaxScale) {
            return {preferred, preferred};
        }
        if (const auto scale = scaleOfMode(output, facts)) {
            return *scale;
        }
    }
    const double whole = wholeScale(output);
    return {whole, whole};
}

} // namespace

Result<SurfaceGeometry, std::string> fitSurface(const OutputState& output,
                                                const SurfaceFacts& facts) {
    if (facts.width == 0 || facts.height == 0 || facts.width > kMaxSide ||
        facts.height > kMaxSide) {
        return Failure{"a size of " + std::to_string(facts.width) + "x" +
                       std::to_string(facts.height) + " points is none between 1 and " +
                       std::to_string(kMaxSide)};
    }
    const Scale scale = chooseScale(output, facts);
    const auto width = static_cast<std::uint32_t>(std::lround(facts.width * scale.x));
    const auto height = static_cast<std::uint32_t>(std::lround(facts.height * scale.y));
    if (width == 0 || height == 0 || width > kMaxSide || height > kMaxSide ||
        std::uint64_t{width} * height > kMaxPixels) {
        return Failure{std::to_string(width) + "x" + std::to_string(height) +
                       " pixels are more than the " + std::to_string(kMaxPixels) +
                       " that a picture may have, or than " + std::to_string(kMaxSide) +
                       " on a side"};
    }
    return SurfaceGeometry{
        .pointsWidth = facts.width,
        .pointsHeight = facts.height,
        .width = width,
        .height = height,
        .scale = std::max(std::round(scale.x * kScaleSteps), 1.0) / kScaleSteps,
        .bufferScale = facts.hasViewport ? 1 : wholeScale(output),
    };
}

} // namespace vantor::agent::wayland
