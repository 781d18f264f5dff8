#include "agent/output/wayland/surface_geometry.h"

#include <gtest/gtest.h>

#include <limits>

namespace vantor::agent::wayland {
namespace {

constexpr auto kMost = std::numeric_limits<std::int32_t>::max();
constexpr auto kLeast = std::numeric_limits<std::int32_t>::min();

OutputState output(Extent mode, std::optional<Extent> logical, std::int32_t scale = 1,
                   std::int32_t transform = WL_OUTPUT_TRANSFORM_NORMAL) {
    OutputState state;
    state.mode = mode;
    state.logicalSize = logical;
    state.scale = scale;
    state.transform = transform;
    return state;
}

/// "1920x1080@1.500 on 1280x720", or "refused".
std::string fit(const OutputState& output, const SurfaceFacts& facts) {
    const auto fitted = fitSurface(output, facts);
    if (!fitted) {
        EXPECT_FALSE(fitted.error().empty());
        return "refused";
    }
    const SurfaceGeometry& geometry = fitted.value();
    return std::to_string(geometry.width) + "x" + std::to_string(geometry.height) + "@" +
           std::to_string(geometry.scale).substr(0, 5) + " on " +
           std::to_string(geometry.pointsWidth) + "x" + std::to_string(geometry.pointsHeight);
}

constexpr SurfaceFacts viewed(std::uint32_t width, std::uint32_t height,
                              std::optional<std::uint32_t> preferredScale = std::nullopt) {
    return {
        .width = width, .height = height, .preferredScale = preferredScale, .hasViewport = true};
}

TEST(SurfaceGeometry, TakesTheScaleThatTheCompositorPrefers) {
    const OutputState told = output({1920, 1080}, Extent{1280, 720}, 2);
    EXPECT_EQ(fit(told, viewed(1280, 720, 180)), "1920x1080@1.500 on 1280x720");
    // Rounded halfway away from zero.
    EXPECT_EQ(fit(told, viewed(911, 513, 180)), "1367x770@1.500 on 911x513");
}

TEST(SurfaceGeometry, FindsAFractionalScaleInModeAndLogicalSize) {
    EXPECT_EQ(fit(output({1920, 1080}, Extent{1280, 720}, 2), viewed(1280, 720)),
              "1920x1080@1.500 on 1280x720");
    EXPECT_EQ(fit(output({1920, 1080}, Extent{1536, 864}, 2), viewed(1536, 864)),
              "1920x1080@1.250 on 1536x864");
    // Without a logical size the surface tells it: it fills the output.
    EXPECT_EQ(fit(output({1920, 1080}, std::nullopt, 2), viewed(1280, 720)),
              "1920x1080@1.500 on 1280x720");
}

TEST(SurfaceGeometry, MeetsTheModeExactlyWherePointsAreRounded) {
    // 1366 / 1.5 is 910.67, 768 / 1.5 is 512.
    EXPECT_EQ(fit(output({1366, 768}, Extent{911, 512}, 2), viewed(911, 512)),
              "1366x768@1.500 on 911x512");
    EXPECT_EQ(fit(output({1366, 768}, Extent{910, 512}, 2), viewed(910, 512)),
              "1366x768@1.500 on 910x512");
}

TEST(SurfaceGeometry, ExchangesTheSidesOfATurnedDisplay) {
    for (const auto transform : {WL_OUTPUT_TRANSFORM_90, WL_OUTPUT_TRANSFORM_270,
                                 WL_OUTPUT_TRANSFORM_FLIPPED_90, WL_OUTPUT_TRANSFORM_FLIPPED_270}) {
        EXPECT_EQ(fit(output({1920, 1080}, Extent{720, 1280}, 2, transform), viewed(720, 1280)),
                  "1080x1920@1.500 on 720x1280");
    }
    for (const auto transform :
         {WL_OUTPUT_TRANSFORM_180, WL_OUTPUT_TRANSFORM_FLIPPED, WL_OUTPUT_TRANSFORM_FLIPPED_180}) {
        EXPECT_EQ(fit(output({1920, 1080}, Extent{1280, 720}, 2, transform), viewed(1280, 720)),
                  "1920x1080@1.500 on 1280x720");
    }
}

TEST(SurfaceGeometry, TakesWholeScalesWithoutAViewport) {
    const SurfaceFacts facts = {.width = 960, .height = 540, .preferredScale = 180};
    const auto fitted = fitSurface(output({1920, 1080}, Extent{960, 540}, 2), facts);
    ASSERT_TRUE(fitted);
    EXPECT_EQ(fitted.value().bufferScale, 2);
    EXPECT_EQ(fit(output({1920, 1080}, Extent{960, 540}, 2), facts), "1920x1080@2.000 on 960x540");
    EXPECT_EQ(fitSurface(output({1920, 1080}, Extent{1280, 720}, 2), viewed(1280, 720))
                  .value()
                  .bufferScale,
              1);
}

TEST(SurfaceGeometry, PassesOverNumbersThatMakeNoScale) {
    // The next best knowledge counts: mode and logical size, then the output's own scale, then 1.
    const OutputState told = output({1920, 1080}, Extent{1280, 720}, 2);
    for (const std::uint32_t absurd : {0U, 120U * 33, 0xFFFFFFFFU}) {
        EXPECT_EQ(fit(told, viewed(1280, 720, absurd)), "1920x1080@1.500 on 1280x720");
    }
    for (const Extent absurd : {Extent{0, 0}, Extent{-1920, 1080}, Extent{kMost, kMost},
                                Extent{kLeast, kLeast}, Extent{kMost, 1}}) {
        EXPECT_EQ(fit(output(absurd, Extent{1280, 720}, 2), viewed(1280, 720)),
                  "2560x1440@2.000 on 1280x720");
        EXPECT_EQ(fit(output({1920, 1080}, absurd, 2), viewed(1280, 720)),
                  "2560x1440@2.000 on 1280x720");
    }
    for (const std::int32_t absurd : {0, -1, 33, kMost, kLeast}) {
        EXPECT_EQ(fit(output({0, 0}, std::nullopt, absurd), viewed(1280, 720)),
                  "1280x720@1.000 on 1280x720");
        EXPECT_EQ(fit(output({0, 0}, std::nullopt, absurd),
                      SurfaceFacts{.width = 1280, .height = 720, .preferredScale = {}}),
                  "1280x720@1.000 on 1280x720");
    }
    EXPECT_EQ(fit(output({1920, 1080}, Extent{1280, 720}, 2, 42), viewed(1280, 720)),
              "1920x1080@1.500 on 1280x720");
}

TEST(SurfaceGeometry, RefusesPicturesThatNoDeviceDraws) {
    const OutputState told = output({1920, 1080}, Extent{1920, 1080});
    EXPECT_EQ(fit(told, viewed(0, 1080)), "refused");
    EXPECT_EQ(fit(told, viewed(1920, 0)), "refused");
    EXPECT_EQ(fit(told, viewed(16385, 16)), "refused");
    EXPECT_EQ(fit(told, viewed(0xFFFFFFFF, 0xFFFFFFFF)), "refused");
    // Side by side, then too many in all.
    EXPECT_EQ(fit(told, viewed(16384, 4096, 120)), "16384x4096@1.000 on 16384x4096");
    EXPECT_EQ(fit(told, viewed(16384, 4097, 120)), "refused");
    EXPECT_EQ(fit(told, viewed(1024, 16, 120 * 17)), "refused");
    // So small a scale leaves no pixel.
    EXPECT_EQ(fit(told, viewed(10, 10, 1)), "refused");
}

} // namespace
} // namespace vantor::agent::wayland
