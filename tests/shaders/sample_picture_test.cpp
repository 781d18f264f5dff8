// The sample shaders draw what their descriptions say, number by number.

#include "shaders/shader_catalog.h"
#include "tests/shaders/shader_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <numbers>
#include <vector>

namespace vantor {
namespace {

using Pixels = std::vector<std::uint8_t>;
using Colour = std::array<double, 3>;

constexpr std::uint32_t kWidth = 320;
constexpr std::uint32_t kHeight = 180;
constexpr double kTwoPi = 2 * std::numbers::pi;

/// A pixel's centre: from the picture's middle in heights, and as a share of each side.
struct Place {
    double x;
    double y;
    double u;
    double v;
    double radius() const { return std::hypot(x, y); }
    double angle() const { return std::atan2(y, x); }
};

Place placeOf(std::uint32_t column, std::uint32_t row) {
    const double x = column + 0.5;
    const double y = row + 0.5;
    return {(x - 0.5 * kWidth) / kHeight, (y - 0.5 * kHeight) / kHeight, x / kWidth, y / kHeight};
}

/// Compares a sample with a formula of place and animation time, at two speeds and under a tint.
template <typename Formula>
void expectPicture(std::string_view source, Formula formula) {
    const ShaderProbe probe = ShaderProbe::ofPicture(source);
    for (const float speed : {1.0F, -0.5F}) {
        ProbeView view = wholePicture(kWidth, kHeight, 7.25F);
        view.uniforms.speed = speed;
        view.uniforms.tint = {1.0F, 0.5F, 0.75F, 0.0F};
        const Pixels pixels = probe.pixels(view);
        int worst = 0;
        for (std::uint32_t row = 0; row < kHeight; ++row) {
            for (std::uint32_t column = 0; column < kWidth; ++column) {
                const Colour colour = formula(placeOf(column, row), 7.25 * speed);
                const std::size_t at = 4 * (std::size_t{row} * kWidth + column);
                constexpr Colour kTint = {1.0, 0.5, 0.75};
                for (std::size_t i = 0; i < 3; ++i) {
                    const double shown = std::clamp(colour.at(i) * kTint.at(i), 0.0, 1.0);
                    worst = std::max(worst, std::abs(static_cast<int>(std::lround(shown * 255)) -
                                                     int{pixels[at + i]}));
                }
            }
        }
        EXPECT_LE(worst, 2) << "at speed " << speed;
    }
}

Colour grey(double level) { return {level, level, level}; }

TEST(SamplePicture, RingsAreASineOfTheDistance) {
    expectPicture(BuiltIn::rings, [](const Place& place, double t) {
        return grey(0.5 + 0.5 * std::sin(place.radius() * 40 - t * 3));
    });
}

TEST(SamplePicture, InterferenceIsFourWavesUnderACosinePalette) {
    expectPicture(BuiltIn::interference, [](const Place& place, double t) {
        double sum = 0;
        double most = 0;
        for (int i = 1; i <= 4; ++i) {
            sum += std::sin(place.u * 10 * i + t * i + place.v * 6) / i;
            most += 1.0 / i;
        }
        const double v = 0.5 + 0.5 * sum / most;
        Colour colour{};
        for (std::size_t i = 0; i < 3; ++i) {
            constexpr Colour kShift = {0, 0.33, 0.67};
            colour.at(i) = 0.5 + 0.5 * std::cos(kTwoPi * (v + kShift.at(i)));
        }
        return colour;
    });
}

TEST(SamplePicture, TheSpiralHasSixArms) {
    expectPicture(BuiltIn::spiral, [](const Place& place, double t) {
        return grey(0.5 + 0.5 * std::sin(place.angle() * 6 + place.radius() * 20 - t * 2));
    });
}

TEST(SamplePicture, TheTunnelDarkensTowardsItsEnd) {
    expectPicture(BuiltIn::tunnel, [](const Place& place, double t) {
        const double radius = std::max(place.radius(), 0.001);
        const double u = 0.3 / radius + t * 0.5;
        const double v = place.angle() / 3.14159;
        const double pattern = 0.5 + 0.5 * std::sin(u * 12) * std::sin(v * 30);
        return grey(pattern * std::clamp(radius * 2, 0.0, 1.0));
    });
}

TEST(SamplePicture, BrightnessOfCellsFallsByOneInEachUnitFromAPoint) {
    const ShaderProbe probe = ShaderProbe::ofPicture(BuiltIn::cells);
    const Pixels pixels = probe.pixels(wholePicture(kWidth, kHeight, 7.25F));
    // Eight units to the height; one step of rounding at either end.
    const double steepest = 8.0 / kHeight * 255 + 1;
    double sharpest = 0;
    int brightest = 0;
    for (std::size_t row = 0; row < kHeight; ++row) {
        for (std::size_t column = 0; column + 1 < kWidth; ++column) {
            const std::size_t at = 4 * (row * kWidth + column);
            brightest = std::max(brightest, int{pixels[at]});
            sharpest = std::max<double>(sharpest, std::abs(int{pixels[at]} - int{pixels[at + 4]}));
            if (row + 1 < kHeight) {
                sharpest = std::max<double>(
                    sharpest, std::abs(int{pixels[at]} - int{pixels[at + 4 * kWidth]}));
            }
        }
    }
    EXPECT_LE(sharpest, steepest);
    EXPECT_GE(sharpest, 0.9 * steepest);
    // A point is never further than half a pixel's diagonal from a pixel's centre.
    EXPECT_GE(brightest, 255 - static_cast<int>(steepest));
}

/// The rain, with columns as wide and rows as high as a glyph's cell.
class MatrixRain : public testing::Test {
  protected:
    static constexpr std::uint32_t kCell = 14;
    static constexpr std::uint32_t kColumns = 24;
    static constexpr std::uint32_t kRows = 40;

    Pixels at(float time, float speed) const {
        ProbeView view = wholePicture(kColumns * kCell, kRows * kCell, time);
        view.uniforms.speed = speed;
        return probe_.pixels(view);
    }
    static const std::uint8_t* pixel(const Pixels& pixels, std::uint32_t x, std::uint32_t y) {
        return &pixels[4 * (std::size_t{y} * kColumns * kCell + x)];
    }

  private:
    ShaderProbe probe_ = ShaderProbe::ofPicture(BuiltIn::matrixRain);
};

TEST_F(MatrixRain, NeverFallsSlowerThanATwentiethOfItsRate) {
    EXPECT_EQ(at(40, 0), at(40, 0.05F));
    EXPECT_EQ(at(40, -3), at(40, 0.05F));
    EXPECT_NE(at(40, 0.06F), at(40, 0.05F));
}

TEST_F(MatrixRain, GlyphsAreDotsOfTwoPixelsWithinTheirCells) {
    const Pixels pixels = at(40, 1);
    int lit = 0;
    for (std::uint32_t y = 0; y < kRows * kCell; ++y) {
        for (std::uint32_t x = 0; x < kColumns * kCell; ++x) {
            const std::uint8_t* const here = pixel(pixels, x, y);
            const bool within = x % kCell / 2 - 1 < 5 && y % kCell / 2 - 1 < 5;
            if (!within) {
                ASSERT_EQ(here[0] + here[1] + here[2], 0) << x << " " << y;
            } else {
                const std::uint8_t* const dot = pixel(pixels, x - x % 2, y - y % 2);
                ASSERT_TRUE(std::equal(here, here + 3, dot)) << x << " " << y;
                lit += here[1] > 0 ? 1 : 0;
            }
        }
    }
    EXPECT_GT(lit, 1000);
}

TEST_F(MatrixRain, ATrailOfTenCellsFadesBehindAWhiteHead) {
    const Pixels pixels = at(40, 1);
    int heads = 0;
    for (std::uint32_t column = 0; column < kColumns; ++column) {
        int lit = 0;
        int headsHere = 0;
        for (std::uint32_t row = 0; row < kRows; ++row) {
            const std::uint8_t* brightest = pixel(pixels, column * kCell, row * kCell);
            for (std::uint32_t i = 0; i < kCell * kCell; ++i) {
                const auto* const here =
                    pixel(pixels, column * kCell + i % kCell, row * kCell + i / kCell);
                brightest = here[1] > brightest[1] ? here : brightest;
            }
            lit += brightest[1] > 0 ? 1 : 0;
            // Of the trail's colour, red is 0.15 of green and blue 0.30; a head is nearly white.
            if (brightest[0] > 200) {
                ++headsHere;
            } else {
                ASSERT_NEAR(brightest[0], 0.15 * brightest[1], 1.0);
                ASSERT_NEAR(brightest[2], 0.30 * brightest[1], 1.0);
            }
        }
        EXPECT_LE(headsHere, 1);
        EXPECT_LE(lit, 11); // ten cells' length may touch eleven
        EXPECT_GE(lit, 8);
        heads += headsHere;
    }
    EXPECT_GT(heads, 20);
}

TEST_F(MatrixRain, GlyphsChangeSixTimesASecondWhateverTheSpeed) {
    // At the least rate few heads reach the next cell in this time.
    const auto sameDots = [](const Pixels& a, const Pixels& b) {
        std::size_t same = 0;
        std::size_t all = 0;
        for (std::size_t i = 1; i < a.size(); i += 4) {
            all += a[i] > 0 || b[i] > 0 ? 1 : 0;
            same += a[i] > 0 && b[i] > 0 ? 1 : 0;
        }
        return static_cast<double>(same) / static_cast<double>(all);
    };
    const Pixels before = at(40.01F, 0);
    EXPECT_GT(sameDots(before, at(40.15F, 0)), 0.9);
    EXPECT_LT(sameDots(before, at(40.18F, 0)), 0.8);
}

} // namespace
} // namespace vantor
