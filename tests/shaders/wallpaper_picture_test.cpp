// What every wallpaper promises of its picture, looked for in the picture itself.

#include "shaders/shader_catalog.h"
#include "tests/shaders/shader_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <map>
#include <ostream>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace vantor {
namespace {

using Pixels = std::vector<std::uint8_t>;

constexpr std::array kSizes = {Float2{640, 360}, Float2{1280, 720}, Float2{3840, 2160},
                               Float2{1080, 1920}, Float2{3440, 1440}};
constexpr std::array kTimes = {0.0F, 12.0F, 599.0F, 86400.0F};

/// The mean of a picture's luma and its standard deviation, of 255.
struct Tone {
    double mean = 0;
    double contrast = 0;
};

struct Wallpaper {
    std::string id;
    std::string_view source;
    Tone least;
    Tone most;
};

void PrintTo(const Wallpaper& wallpaper, std::ostream* out) { *out << wallpaper.id; }

std::vector<Wallpaper> wallpapers() {
    const std::map<std::string, std::pair<Tone, Tone>> bounds = {
        {"builtin.elec-pcb", {{40, 30}, {75, 50}}},
        {"builtin.elec-oscilloscope", {{20, 30}, {55, 55}}},
        {"builtin.smoke", {{40, 18}, {90, 60}}},
        {"builtin.nebula-orion", {{28, 33}, {100, 62}}},
        {"builtin.nebula-milky-way", {{30, 36}, {68, 56}}},
        {"builtin.planet-jupiter", {{18, 45}, {50, 72}}},
        {"builtin.topo-contours", {{185, 18}, {225, 36}}},
        {"builtin.topo-contours-dark", {{9, 17}, {26, 40}}},
        {"builtin.topo-isometric", {{55, 23}, {100, 42}}},
        {"aurora", {{25, 15}, {65, 50}}},
        {"plasma", {{75, 20}, {120, 50}}},
    };
    std::vector<Wallpaper> all;
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        const auto& [least, most] = bounds.at(std::string(entry.id));
        all.push_back({std::string(entry.id), entry.source.value(), least, most});
    }
    return all;
}

Tone toneOf(const Pixels& pixels) {
    double sum = 0;
    double squares = 0;
    const std::size_t count = pixels.size() / 4;
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        const double luma = 0.2126 * pixels[i] + 0.7152 * pixels[i + 1] + 0.0722 * pixels[i + 2];
        sum += luma;
        squares += luma * luma;
    }
    const double mean = sum / static_cast<double>(count);
    return {mean, std::sqrt(std::max(squares / static_cast<double>(count) - mean * mean, 0.0))};
}

/// The mean difference of two pictures' channels, of 255.
double difference(const Pixels& a, const Pixels& b) {
    EXPECT_EQ(a.size(), b.size());
    double sum = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sum += std::abs(int{a[i]} - int{b[i]});
    }
    return sum / (0.75 * static_cast<double>(a.size()));
}

/// What the table at the head of a source says of one slot of the look.
struct Slot {
    std::string name;
    bool read = true;
    std::string strength = {}; // the slot that says how much of this one is taken, if one does
    float low = 0;
    float high = 0;
};

/// The rows "// params.x    what it does    0.5 .. 2    1"; one for each colour and parameter.
std::vector<Slot> documentedSlots(std::string_view source) {
    std::vector<Slot> slots;
    std::istringstream lines{std::string(source)};
    const std::regex row(
        R"(^// (color1\.\.3|color[123]|background|params\.x\.\.w|params\.[xyzw]) +(.*)$)");
    const std::regex range(R"((-?[0-9.]+) \.\. (-?[0-9.]+) +[0-9.]+$)");
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (!std::regex_match(line, match, row)) {
            continue;
        }
        const std::string name = match[1];
        const std::string text = match[2];
        const bool read = !text.starts_with("not read");
        if (name.find("..") != std::string::npos) {
            for (const char last : std::string(name.starts_with("color") ? "123" : "xyzw")) {
                slots.push_back({.name = name.substr(0, name.find("..") - 1) + last, .read = read});
            }
            continue;
        }
        Slot slot{.name = name, .read = read};
        if (std::smatch by; std::regex_search(text, by, std::regex(R"(, by (params\.[xyzw]))"))) {
            slot.strength = by[1];
        }
        if (std::smatch ends; name.starts_with("params") && std::regex_search(text, ends, range)) {
            slot.low = std::stof(ends[1]);
            slot.high = std::stof(ends[2]);
        }
        slots.push_back(slot);
    }
    return slots;
}

/// The look with a slot set: a parameter to `value`, a colour to one that no wallpaper has.
void setSlot(ShaderUniforms& look, const std::string& slot, float value) {
    const Float4 odd{0.9F, 0.25F, 0.1F, 1.0F};
    const std::map<std::string, Float4 ShaderUniforms::*> colours = {
        {"color1", &ShaderUniforms::color1},
        {"color2", &ShaderUniforms::color2},
        {"color3", &ShaderUniforms::color3},
        {"background", &ShaderUniforms::background}};
    const std::map<std::string, float Float4::*> parameters = {{"params.x", &Float4::x},
                                                               {"params.y", &Float4::y},
                                                               {"params.z", &Float4::z},
                                                               {"params.w", &Float4::w}};
    if (const auto colour = colours.find(slot); colour != colours.end()) {
        look.*colour->second = odd;
    } else {
        look.params.*parameters.at(slot) = value;
    }
}

/// The source with the colour that it returns left as it is, not clamped to what can be shown.
std::string unclamped(std::string_view source) {
    std::string text(source);
    const std::string clamp = "return float4(saturate(colour)";
    if (const std::size_t at = text.find(clamp); at != std::string::npos) {
        text.replace(at, clamp.size(), "return float4((colour)");
    }
    return text;
}

class WallpaperPicture : public testing::TestWithParam<Wallpaper> {
  protected:
    /// The wallpaper's picture; compiled once in a process.
    static const ShaderProbe& picture() {
        static std::map<std::string, ShaderProbe> probes;
        auto found = probes.find(GetParam().id);
        if (found == probes.end()) {
            found = probes.emplace(GetParam().id, ShaderProbe::ofPicture(GetParam().source)).first;
        }
        return found->second;
    }

    static Pixels at(float time) { return picture().pixels(wholePicture(320, 180, time)); }
};

TEST_P(WallpaperPicture, StandsStillAtSpeedZero) {
    ProbeView view = wholePicture(320, 180, 0);
    view.uniforms.speed = 0;
    const Pixels first = picture().pixels(view);
    for (const float time : {12.0F, 599.5F, 86400.0F}) {
        view.uniforms.time = time;
        EXPECT_EQ(picture().pixels(view), first) << time;
    }
}

TEST_P(WallpaperPicture, MovesVisiblyWithinASecond) {
    for (const float time : kTimes) {
        EXPECT_GE(difference(at(time), at(time + 1)), 1.0) << time;
    }
}

TEST_P(WallpaperPicture, RunsAsFastAsItsSpeedSays) {
    ProbeView twice = wholePicture(320, 180, 6);
    twice.uniforms.speed = 2;
    EXPECT_EQ(picture().pixels(twice), at(12));
}

TEST_P(WallpaperPicture, RunsEvenlyAfterADay) {
    // A sixteenth of a second is a whole number of steps of a float of this size.
    constexpr float kStep = 0.0625F;
    const auto changes = [](float from) {
        std::vector<double> all;
        for (int i = 0; i < 4; ++i) {
            const float time = from + kStep * static_cast<float>(i);
            all.push_back(difference(at(time), at(time + kStep)));
        }
        std::sort(all.begin(), all.end());
        return all;
    };
    const std::vector<double> early = changes(12);
    const std::vector<double> late = changes(86400);
    EXPECT_GT(early.front(), 0);
    EXPECT_GE(late.front(), 0.4 * early.front());
    EXPECT_LE(late.back(), 2.5 * early.back());
    EXPECT_LE(late.back(), 1.5 * late.front());
}

TEST_P(WallpaperPicture, ABlackTintLeavesBlackAndOpaque) {
    ProbeView view = wholePicture(320, 180, 12);
    view.uniforms.tint = {0, 0, 0, 0};
    const Pixels pixels = picture().pixels(view);
    for (std::size_t i = 0; i < pixels.size(); i += 4) {
        ASSERT_EQ(pixels[i] | pixels[i + 1] | pixels[i + 2], 0) << i / 4;
        ASSERT_EQ(pixels[i + 3], 255) << i / 4;
    }
}

TEST_P(WallpaperPicture, TheTintMultipliesEachChannel) {
    ProbeView view = wholePicture(320, 180, 12);
    const Pixels plain = picture().pixels(view);
    view.uniforms.tint = {0.5F, 0.25F, 0.75F, 0};
    const Pixels tinted = picture().pixels(view);
    constexpr std::array kTint = {0.5, 0.25, 0.75, 1.0};
    for (std::size_t i = 0; i < plain.size(); ++i) {
        ASSERT_NEAR(tinted[i], plain[i] * kTint.at(i % 4), 1.0) << i;
    }
}

TEST_P(WallpaperPicture, IsOpaqueAndWithinItsToneAtEverySizeAndTime) {
    for (const Float2& size : kSizes) {
        for (const float time : kTimes) {
            const Pixels pixels = picture().pixels(sparsePicture(size, time));
            for (std::size_t i = 3; i < pixels.size(); i += 4) {
                ASSERT_EQ(pixels[i], 255);
            }
            const Tone tone = toneOf(pixels);
            EXPECT_GE(tone.mean, GetParam().least.mean) << size.x << " " << time;
            EXPECT_LE(tone.mean, GetParam().most.mean) << size.x << " " << time;
            EXPECT_GE(tone.contrast, GetParam().least.contrast) << size.x << " " << time;
            EXPECT_LE(tone.contrast, GetParam().most.contrast) << size.x << " " << time;
        }
    }
}

TEST_P(WallpaperPicture, EveryColourIsANumberAtEverySizeTimeAndLook) {
    const ShaderProbe sums = ShaderProbe::ofNumbers(unclamped(GetParam().source), R"(
        float probe(VOut in, constant Uniforms& u) {
            float4 c = picture(in, u);
            return c.r + c.g + c.b + c.a;
        })");
    const auto check = [&](const ProbeView& view, const std::string& what) {
        const std::vector<float> numbers = sums.numbers(view);
        EXPECT_TRUE(std::all_of(numbers.begin(), numbers.end(), [](float number) {
            return std::isfinite(number) && std::abs(number) < 1000;
        })) << what;
    };
    for (const Float2& size : kSizes) {
        for (const float time : kTimes) {
            check(sparsePicture(size, time),
                  std::to_string(size.x) + " at " + std::to_string(time));
        }
    }
    ProbeView backwards = sparsePicture(kSizes[0], 599);
    backwards.uniforms.speed = -3;
    check(backwards, "backwards");
    for (const Slot& slot : documentedSlots(GetParam().source)) {
        for (const float value : {slot.low, slot.high, 0.0F}) {
            ProbeView view = sparsePicture(kSizes[0], 12);
            setSlot(view.uniforms, slot.name, value);
            check(view, slot.name + " = " + std::to_string(value));
        }
    }
}

TEST_P(WallpaperPicture, EverySlotOfItsTableSteersItAndNoOther) {
    for (const Slot& slot : documentedSlots(GetParam().source)) {
        ProbeView plain = wholePicture(160, 90, 12);
        if (!slot.strength.empty()) {
            setSlot(plain.uniforms, slot.strength, 0.5F);
        }
        // One end of the range may be the default, and a whole turn is none at all.
        bool steered = false;
        for (const float value : {slot.low, 0.4F * slot.low + 0.6F * slot.high, slot.high}) {
            ProbeView view = plain;
            setSlot(view.uniforms, slot.name, value);
            steered = steered || picture().pixels(view) != picture().pixels(plain);
        }
        EXPECT_EQ(steered, slot.read) << slot.name;
    }
    ProbeView custom = wholePicture(160, 90, 12);
    const Pixels plain = picture().pixels(custom);
    for (int slot = 0; slot < ShaderUniforms::customSlotCount; ++slot) {
        custom.uniforms.setCustom(slot, 0.7F);
    }
    EXPECT_EQ(picture().pixels(custom), plain);
}

INSTANTIATE_TEST_SUITE_P(Catalog, WallpaperPicture, testing::ValuesIn(wallpapers()),
                         [](const auto& wallpaper) {
                             std::string name = wallpaper.param.id;
                             std::replace_if(
                                 name.begin(), name.end(),
                                 [](char c) { return c == '.' || c == '-'; }, '_');
                             return name;
                         });

} // namespace
} // namespace vantor
