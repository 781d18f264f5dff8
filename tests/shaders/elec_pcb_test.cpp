// The circuit board keeps its own rules, looked for in what its functions lay out: the copper of
// 256 tiles sampled every eighth of a unit, and the choices made for 1600 tiles.

#include "shaders/shader_catalog.h"
#include "tests/shaders/shader_probe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantor {
namespace {

constexpr int kTileUnits = 28;
constexpr int kSamplesPerUnit = 8;
constexpr int kTilesAcross = 16;
constexpr int kSide = kTilesAcross * kTileUnits * kSamplesPerUnit;

// What stands at a sample; also written into the probe's text below.
constexpr int kTrace = 1;
constexpr int kTraceMiddle = 2;
constexpr int kGold = 4;
constexpr int kStitching = 8; // gold that ties the pour down and stands in its copper
constexpr int kPour = 16;

/// The map of a part of the board: what stands at every sample.
class BoardMap {
  public:
    static const BoardMap& shared() {
        static const BoardMap map;
        return map;
    }

    int at(int x, int y) const {
        return samples_[static_cast<std::size_t>(y) * kSide + static_cast<std::size_t>(x)];
    }
    bool has(int x, int y, int what) const { return (at(x, y) & what) != 0; }
    /// Copper of a net: neither pour nor what stands in it.
    bool isNet(int x, int y) const { return has(x, y, kTrace | kGold) && !has(x, y, kStitching); }
    /// Copper of a net with something else beside it.
    bool isRim(int x, int y) const {
        return isNet(x, y) &&
               !(isNet(x - 1, y) && isNet(x + 1, y) && isNet(x, y - 1) && isNet(x, y + 1));
    }

  private:
    BoardMap() {
        const ShaderProbe probe = ShaderProbe::ofNumbers(More::elecPCB, R"(
            float probe(VOut in, constant Uniforms& u) {
                float2 board = float2(140.0, -84.0) + in.position.xy / 8.0;
                Layers l = survey(board, 0.05, 0.0, u);
                float what = l.masked < 0.0 ? 1.0 : 0.0;
                what += l.masked < -0.12 ? 2.0 : 0.0;
                what += l.gold < 0.0 ? 4.0 : 0.0;
                what += l.gold < 0.0 && l.copper > 0.0 ? 8.0 : 0.0;
                what += l.pour < 0.0 ? 16.0 : 0.0;
                return what;
            })");
        ProbeView view{.uniforms = {{.x = 1280, .y = 720}, 0}};
        view.width = kSide;
        view.height = kSide;
        const std::vector<float> numbers = probe.numbers(view);
        samples_.assign(numbers.begin(), numbers.end());
    }

    std::vector<std::uint8_t> samples_;
};

/// The offsets of all samples within a distance, in samples.
std::vector<std::pair<int, int>> discOf(double radius) {
    std::vector<std::pair<int, int>> disc;
    const int reach = static_cast<int>(radius);
    for (int y = -reach; y <= reach; ++y) {
        for (int x = -reach; x <= reach; ++x) {
            if (x * x + y * y <= radius * radius) {
                disc.emplace_back(x, y);
            }
        }
    }
    return disc;
}

/// Calls `visit(x, y)` for every sample that is at least `border` samples from the map's edge.
template <typename Visit>
void forEachSample(int border, Visit visit) {
    for (int y = border; y < kSide - border; ++y) {
        for (int x = border; x < kSide - border; ++x) {
            visit(x, y);
        }
    }
}

/// Places for a message: the first few, in samples.
std::string placesOf(const std::vector<std::pair<int, int>>& places) {
    std::string text = std::to_string(places.size()) + " places:";
    for (std::size_t i = 0; i < std::min<std::size_t>(places.size(), 8); ++i) {
        text +=
            " (" + std::to_string(places[i].first) + ", " + std::to_string(places[i].second) + ")";
    }
    return text;
}

TEST(ElecPCB, EveryTraceEndsOnAPinOrInAVia) {
    const BoardMap& map = BoardMap::shared();
    // A circle around a point of a trace meets copper on two sides, but near an end on one. It is
    // narrow enough to miss the next trace of the bus.
    std::array<std::pair<int, int>, 32> circle;
    for (std::size_t i = 0; i < circle.size(); ++i) {
        const double angle = 2 * 3.14159265358979 * static_cast<double>(i) / circle.size();
        circle.at(i) = {static_cast<int>(std::lround(0.6 * kSamplesPerUnit * std::cos(angle))),
                        static_cast<int>(std::lround(0.6 * kSamplesPerUnit * std::sin(angle)))};
    }
    const auto disc = discOf(0.9 * kSamplesPerUnit);
    std::vector<std::pair<int, int>> loose;
    int ends = 0;
    forEachSample(kSamplesPerUnit, [&](int x, int y) {
        if (!map.has(x, y, kTraceMiddle)) {
            return;
        }
        int arcs = 0;
        bool before = map.isNet(x + circle.back().first, y + circle.back().second);
        for (const auto& [dx, dy] : circle) {
            const bool now = map.isNet(x + dx, y + dy);
            arcs += now && !before ? 1 : 0;
            before = now;
        }
        if (arcs >= 2) {
            return;
        }
        ++ends;
        if (std::none_of(disc.begin(), disc.end(), [&](const auto& offset) {
                return map.has(x + offset.first, y + offset.second, kGold);
            })) {
            loose.emplace_back(x, y);
        }
    });
    EXPECT_GT(ends, 5000);
    EXPECT_TRUE(loose.empty()) << placesOf(loose);
}

TEST(ElecPCB, EveryNetJoinsAtMostTwoPadsOrViasAndKeepsClearOfOthers) {
    const BoardMap& map = BoardMap::shared();
    // Nets and the pads in them are numbered by flooding.
    std::vector<int> nets(static_cast<std::size_t>(kSide) * kSide, 0);
    std::vector<int> pads(nets.size(), 0);
    const auto index = [](int x, int y) {
        return static_cast<std::size_t>(y) * kSide + static_cast<std::size_t>(x);
    };
    const auto flood = [&](std::vector<int>& numbers, int x, int y, int number, auto belongs) {
        std::vector<std::pair<int, int>> open = {{x, y}};
        numbers[index(x, y)] = number;
        while (!open.empty()) {
            const auto [atX, atY] = open.back();
            open.pop_back();
            constexpr std::array<std::pair<int, int>, 4> kSteps = {
                {{1, 0}, {-1, 0}, {0, 1}, {0, -1}}};
            for (const auto& [dx, dy] : kSteps) {
                const int toX = atX + dx;
                const int toY = atY + dy;
                if (toX >= 0 && toX < kSide && toY >= 0 && toY < kSide &&
                    numbers[index(toX, toY)] == 0 && belongs(toX, toY)) {
                    numbers[index(toX, toY)] = number;
                    open.emplace_back(toX, toY);
                }
            }
        }
    };
    int netCount = 0;
    int padCount = 0;
    std::vector<int> padsOfNet = {0};
    std::vector<std::pair<int, int>> crowded;
    const auto isNet = [&](int x, int y) { return map.isNet(x, y); };
    const auto isPad = [&](int x, int y) { return map.isNet(x, y) && map.has(x, y, kGold); };
    forEachSample(0, [&](int x, int y) {
        if (isNet(x, y) && nets[index(x, y)] == 0) {
            flood(nets, x, y, ++netCount, isNet);
            padsOfNet.push_back(0);
        }
    });
    forEachSample(0, [&](int x, int y) {
        if (isPad(x, y) && pads[index(x, y)] == 0) {
            flood(pads, x, y, ++padCount, isPad);
            if (++padsOfNet[static_cast<std::size_t>(nets[index(x, y)])] == 3) {
                crowded.emplace_back(x, y);
            }
        }
    });
    EXPECT_GT(netCount, 3000);
    EXPECT_TRUE(crowded.empty()) << placesOf(crowded);

    std::vector<std::pair<int, int>> close;
    const auto disc = discOf(0.25 * kSamplesPerUnit);
    forEachSample(kSamplesPerUnit, [&](int x, int y) {
        const int net = nets[index(x, y)];
        if (map.isRim(x, y) && std::any_of(disc.begin(), disc.end(), [&](const auto& offset) {
                const int other = nets[index(x + offset.first, y + offset.second)];
                return other != 0 && other != net;
            })) {
            close.emplace_back(x, y);
        }
    });
    EXPECT_TRUE(close.empty()) << placesOf(close);
}

TEST(ElecPCB, ThePourKeepsClearOfEveryTraceViaAndPad) {
    const BoardMap& map = BoardMap::shared();
    const auto disc = discOf(0.36 * kSamplesPerUnit);
    std::vector<std::pair<int, int>> close;
    forEachSample(kSamplesPerUnit, [&](int x, int y) {
        if (map.isRim(x, y) && std::any_of(disc.begin(), disc.end(), [&](const auto& offset) {
                return map.has(x + offset.first, y + offset.second, kPour);
            })) {
            close.emplace_back(x, y);
        }
    });
    EXPECT_TRUE(close.empty()) << placesOf(close);
}

TEST(ElecPCB, AboutHalfTheTilesShowAPour) {
    const BoardMap& map = BoardMap::shared();
    std::set<std::pair<int, int>> poured;
    constexpr int kTileSamples = kTileUnits * kSamplesPerUnit;
    forEachSample(0, [&](int x, int y) {
        if (map.has(x, y, kPour)) {
            poured.emplace(x / kTileSamples, y / kTileSamples);
        }
    });
    EXPECT_NEAR(static_cast<double>(poured.size()) / (kTilesAcross * kTilesAcross), 0.5, 0.1);
}

/// A number for each of 40 × 40 tiles; `functions` see the tile's corner in `in.position.xy`.
std::vector<float> ofTiles(const std::string& expression) {
    const ShaderProbe probe =
        ShaderProbe::ofNumbers(More::elecPCB, "float probe(VOut in, constant Uniforms& u) {\n"
                                              "    float2 tile = floor(in.position.xy) - 20.0;\n"
                                              "    return " +
                                                  expression + ";\n}\n");
    ProbeView view;
    view.width = 40;
    view.height = 40;
    return probe.numbers(view);
}

double meanOf(const std::vector<float>& numbers) {
    double sum = 0;
    for (const float number : numbers) {
        sum += number;
    }
    return sum / static_cast<double>(numbers.size());
}

TEST(ElecPCB, ThreeTilesOfFiveHoldAChipAndHalfRunAcross) {
    EXPECT_NEAR(meanOf(ofTiles("hasChip(tile) ? 1.0 : 0.0")), 0.6, 0.04);
    EXPECT_NEAR(meanOf(ofTiles("isHorizontal(tile) ? 1.0 : 0.0")), 0.5, 0.04);
}

TEST(ElecPCB, ChipsAndBusesComeInEverySizeAndInNoOther) {
    const std::vector<float> lengths = ofTiles("chipLength(tile)");
    EXPECT_EQ(std::set<float>(lengths.begin(), lengths.end()), (std::set<float>{4, 5, 6, 7, 8}));
    const std::vector<float> sizes = ofTiles("busSize(tile.x + 40.0 * tile.y)");
    EXPECT_EQ(std::set<float>(sizes.begin(), sizes.end()), (std::set<float>{4, 5, 6, 7, 8, 9}));
}

TEST(ElecPCB, OnlyTheMiddleBandOfAChipsTileIsLive) {
    const std::vector<float> live = ofTiles(
        "!hasChip(tile) ? 0.0 : (isLive(tile, 1.0, isHorizontal(tile)) ? 0.0 : 1.0) + "
        "(isLive(tile, 0.0, isHorizontal(tile)) || isLive(tile, 2.0, isHorizontal(tile)) ? 1.0 "
        ": 0.0)");
    EXPECT_EQ(std::count(live.begin(), live.end(), 0.0F), 1600);
}

/// For each sample of the board: 0 where no trace of a bus with neighbours is near, 1 where the
/// trace's neighbours are one pitch away, 2 where one of them is nearer, 3 where one is further.
/// Each bus is looked at by itself, away from its ends.
constexpr const char* kSpacingOfBuses = R"(
    // The bus at a point, if it is the one numbered `only` (any, if that is 0), and its number.
    Layers busAt(float2 board, float only, constant Uniforms& u, thread float& number) {
        float2 tile = floor(board / kTile);
        float2 local = board - tile * kTile;
        bool horizontal = isHorizontal(tile);
        float2 p = horizontal ? local : float2(local.y, kTile - local.x);
        float band = clamp(floor(p.y / kBand), 0.0, 2.0);
        float row = 3.0 * (horizontal ? tile.y : tile.x) + band;
        number = row + (horizontal ? 1000.0 : 2000.0);
        Layers l = bareLaminate();
        if (!isLive(tile, band, horizontal) || (only != 0.0 && only != number)) {
            return l;
        }
        addBus(float2(p.x, p.y - (band + 0.5) * kBand), tile, row, band, horizontal, 0.0, u, l);
        l.aside = horizontal ? l.aside : float2(-l.aside.y, l.aside.x);
        return l;
    }
    // To the bus's nearest trace from any point of an arc about `middle`. The arc is short enough to
    // miss the trace itself where that bends, and long enough to meet its neighbour there.
    float nearArc(float2 middle, float2 way, float radius, float only, constant Uniforms& u) {
        float nearest = 100.0;
        for (int i = -4; i <= 4; ++i) {
            float a = float(i) * 0.095;
            float number;
            float2 turned = float2(cos(a) * way.x - sin(a) * way.y, sin(a) * way.x + cos(a) * way.y);
            nearest = min(nearest, busAt(middle + radius * turned, only, u, number).masked);
        }
        return nearest;
    }
    float probe(VOut in, constant Uniforms& u) {
        float2 board = float2(140.0, -84.0) + in.position.xy * 0.43;
        float number;
        Layers l = busAt(board, 0.0, u, number);
        bool ends = l.gold < 2.0;
        if (l.masked > -0.02 || l.masked < -0.2 || ends) {
            return 0.0;
        }
        float2 middle = board - l.aside * (l.masked + 0.22);
        float verdict = 0.0;
        for (int side = -1; side <= 1; side += 2) {
            float2 way = l.aside * float(side);
            if (nearArc(middle, way, 0.72, number, u) < -0.05) {
                return 2.0;
            }
            float pitch = nearArc(middle, way, 1.0, number, u);
            if (min(pitch, nearArc(middle, way, 1.3, number, u)) < 0.0) {
                if (pitch > -0.08) {
                    return 3.0;
                }
                verdict = 1.0;
            }
        }
        return verdict;
    }
)";

TEST(ElecPCB, TheTracesOfABusKeepOnePitchThroughEveryJog) {
    const ShaderProbe probe = ShaderProbe::ofNumbers(More::elecPCB, kSpacingOfBuses);
    ProbeView view{.uniforms = {{.x = 1280, .y = 720}, 0}};
    view.width = 1024;
    view.height = 1024;
    const std::vector<float> verdicts = probe.numbers(view);
    EXPECT_GT(std::count(verdicts.begin(), verdicts.end(), 1.0F), 30000);
    EXPECT_EQ(std::count(verdicts.begin(), verdicts.end(), 2.0F), 0);
    EXPECT_EQ(std::count(verdicts.begin(), verdicts.end(), 3.0F), 0);
}

} // namespace
} // namespace vantor
