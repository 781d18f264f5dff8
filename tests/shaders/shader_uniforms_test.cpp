#include "shaders/shader_uniforms.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>

namespace vantor {
namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

PropertyListDictionary look(std::string_view key, PropertyList value) {
    PropertyListDictionary dictionary;
    dictionary.set(key, std::move(value));
    return dictionary;
}

ShaderUniforms decoded(std::string_view key, PropertyList value) {
    return ShaderUniforms::fromLookPlist(look(key, std::move(value)));
}

/// The numbers 1, 2, 3 ... `count`.
PropertyList::Array counting(int count) {
    PropertyList::Array values;
    for (int i = 1; i <= count; ++i) {
        values.emplace_back(static_cast<double>(i));
    }
    return values;
}

struct VectorField {
    const char* key;
    Float4 ShaderUniforms::*field;
};

class ShaderUniformsVector : public testing::TestWithParam<VectorField> {};

TEST(ShaderUniforms, DefaultsAreTheFloatsNearestToTheirDecimals) {
    const ShaderUniforms block;
    EXPECT_EQ(block.resolution, (Float2{0.0F, 0.0F}));
    EXPECT_EQ(block.time, 0.0F);
    EXPECT_EQ(block.speed, 1.0F);
    EXPECT_EQ(block.tint, (Float4{1.0F, 1.0F, 1.0F, 1.0F}));
    EXPECT_EQ(block.color1, (Float4{0.69F, 0.42F, 1.0F, 1.0F}));
    EXPECT_EQ(block.color2, (Float4{0.31F, 0.84F, 1.0F, 1.0F}));
    EXPECT_EQ(block.color3, (Float4{0.36F, 0.36F, 0.94F, 1.0F}));
    EXPECT_EQ(block.background, (Float4{0.02F, 0.024F, 0.04F, 1.0F}));
    EXPECT_EQ(block.params, (Float4{1.0F, 0.0F, 0.0F, 0.0F}));
    for (int i = 0; i < ShaderUniforms::customSlotCount; ++i) {
        EXPECT_EQ(block.custom(i), 0.0F) << i;
    }
}

TEST(ShaderUniforms, ConstructorSetsResolutionAndTimeAndNothingElse) {
    ShaderUniforms block({640.0F, 360.0F}, 12.5F);
    EXPECT_EQ(block.resolution, (Float2{640.0F, 360.0F}));
    EXPECT_EQ(block.time, 12.5F);
    block.resolution = {};
    block.time = 0.0F;
    EXPECT_EQ(block, ShaderUniforms());
}

TEST(ShaderUniforms, BytesAreSixtyFloatsInTheOrderThatShadersDeclare) {
    ShaderUniforms block({2.0F, 3.0F}, 4.0F);
    block.speed = 5.0F;
    block.background.w = 6.0F;
    block.params.y = 7.0F;
    block.setCustom(31, 8.0F);
    std::array<float, 60> floats{};
    std::memcpy(floats.data(), &block, sizeof(block));
    EXPECT_EQ(floats[0], 2.0F);
    EXPECT_EQ(floats[1], 3.0F);
    EXPECT_EQ(floats[2], 4.0F);
    EXPECT_EQ(floats[3], 5.0F);
    EXPECT_EQ(floats[8], 0.69F);
    EXPECT_EQ(floats[23], 6.0F);
    EXPECT_EQ(floats[25], 7.0F);
    EXPECT_EQ(floats[59], 8.0F);
}

TEST(ShaderUniforms, ThereAreThirtyTwoCustomSlots) {
    EXPECT_EQ(ShaderUniforms::customSlotCount, 32);
}

TEST(ShaderUniforms, SlotsOutsideTheRangeReadZero) {
    ShaderUniforms block;
    for (int i = 0; i < ShaderUniforms::customSlotCount; ++i) {
        block.setCustom(i, 1.0F);
    }
    for (const int slot :
         {-1, 32, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        EXPECT_EQ(block.custom(slot), 0.0F) << slot;
    }
}

TEST(ShaderUniforms, SlotsOutsideTheRangeAreNotWritten) {
    ShaderUniforms block;
    for (const int slot :
         {-1, 32, 1000, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
        block.setCustom(slot, 1.0F);
        EXPECT_EQ(block, ShaderUniforms()) << slot;
    }
}

TEST(ShaderUniforms, ValuesThatAreNotFiniteAreNotStoredInASlot) {
    ShaderUniforms block;
    block.setCustom(0, 0.5F);
    const ShaderUniforms before = block;
    block.setCustom(0, std::numeric_limits<float>::quiet_NaN());
    block.setCustom(0, std::numeric_limits<float>::infinity());
    block.setCustom(0, -std::numeric_limits<float>::infinity());
    EXPECT_EQ(block, before);
}

TEST(ShaderUniforms, SlotFiveIsTheSecondComponentOfTheSecondVector) {
    ShaderUniforms block;
    block.setCustom(5, 0.25F);
    EXPECT_EQ(block.custom(5), 0.25F);
    ShaderUniforms expected;
    expected.custom1.y = 0.25F;
    EXPECT_EQ(block, expected);
}

TEST(ShaderUniforms, EverySlotIsItsOwnFloatInOrder) {
    ShaderUniforms block;
    for (int i = 0; i < ShaderUniforms::customSlotCount; ++i) {
        block.setCustom(i, static_cast<float>(i + 1));
    }
    const std::array<Float4, 8> vectors = {block.custom0, block.custom1, block.custom2,
                                           block.custom3, block.custom4, block.custom5,
                                           block.custom6, block.custom7};
    for (int v = 0; v < 8; ++v) {
        const auto first = static_cast<float>(4 * v + 1);
        EXPECT_EQ(vectors[static_cast<std::size_t>(v)],
                  (Float4{first, first + 1.0F, first + 2.0F, first + 3.0F}));
        EXPECT_EQ(block.custom(4 * v + 3), first + 3.0F);
    }
}

TEST(ShaderUniforms, AnEmptyLookGivesTheDefaults) {
    EXPECT_EQ(ShaderUniforms::fromLookPlist({}), ShaderUniforms());
}

TEST(ShaderUniforms, UnknownKeysAndFrameValuesInALookAreIgnored) {
    PropertyListDictionary dictionary;
    dictionary.set("resolution", PropertyList::Array{640, 360});
    dictionary.set("time", PropertyList::Array{12.0});
    dictionary.set("Speed", PropertyList::Array{3.0});
    EXPECT_EQ(ShaderUniforms::fromLookPlist(dictionary), ShaderUniforms());
}

TEST(ShaderUniforms, SpeedIsTheFirstNumberOfItsArray) {
    EXPECT_EQ(decoded("speed", PropertyList::Array{2.0}).speed, 2.0F);
    EXPECT_EQ(decoded("speed", PropertyList::Array{2.0, 9.0}).speed, 2.0F);
    EXPECT_EQ(decoded("speed", PropertyList::Array{2.0, kNaN}).speed, 2.0F);
}

TEST(ShaderUniforms, SpeedIsNotClamped) {
    EXPECT_EQ(decoded("speed", PropertyList::Array{-0.5}).speed, -0.5F);
    EXPECT_EQ(decoded("speed", PropertyList::Array{0.0}).speed, 0.0F);
    EXPECT_EQ(decoded("speed", PropertyList::Array{1e6}).speed, 1e6F);
}

TEST(ShaderUniforms, SpeedBeyondTheFloatRangeBecomesInfinite) {
    EXPECT_EQ(decoded("speed", PropertyList::Array{1e300}).speed,
              std::numeric_limits<float>::infinity());
}

TEST(ShaderUniforms, SpeedOfAnotherShapeKeepsTheDefault) {
    for (const PropertyList& value :
         {PropertyList(PropertyList::Array{}), PropertyList(PropertyList::Array{kNaN}),
          PropertyList(PropertyList::Array{kInfinity}),
          PropertyList(PropertyList::Array{-kInfinity}), PropertyList(PropertyList::Array{"2"}),
          PropertyList(PropertyList::Array{2.0, "fast"}), PropertyList(2.0), PropertyList("2"),
          PropertyList(PropertyListDictionary{})}) {
        EXPECT_EQ(decoded("speed", value), ShaderUniforms());
    }
}

TEST(ShaderUniforms, IntegersAndBooleansCountAsNumbers) {
    EXPECT_EQ(decoded("speed", PropertyList::Array{3}).speed, 3.0F);
    EXPECT_EQ(decoded("speed", PropertyList::Array{false}).speed, 0.0F);
    EXPECT_EQ(decoded("tint", PropertyList::Array{true, 2, 0.5, std::uint64_t{7}}).tint,
              (Float4{1.0F, 2.0F, 0.5F, 7.0F}));
}

TEST_P(ShaderUniformsVector, FourFiniteNumbersAreTakenUnclamped) {
    ShaderUniforms expected;
    expected.*GetParam().field = {-1.5F, 0.5F, 7.0F, 0.0F};
    EXPECT_EQ(decoded(GetParam().key, PropertyList::Array{-1.5, 0.5, 7.0, 0.0}), expected);
}

TEST_P(ShaderUniformsVector, AnyOtherShapeKeepsTheDefault) {
    for (const PropertyList& value :
         {PropertyList(counting(3)), PropertyList(counting(5)), PropertyList(PropertyList::Array{}),
          PropertyList(PropertyList::Array{1.0, 0.0, kNaN, 1.0}),
          PropertyList(PropertyList::Array{kInfinity, 0.0, 0.0, 1.0}),
          PropertyList(PropertyList::Array{1.0, 0.0, 0.0, "1"}), PropertyList(1.0),
          PropertyList("1 0 0 1")}) {
        EXPECT_EQ(decoded(GetParam().key, value), ShaderUniforms());
    }
}

TEST_P(ShaderUniformsVector, ANumberBeyondTheFloatRangeBecomesInfinite) {
    ShaderUniforms expected;
    constexpr float kLimit = std::numeric_limits<float>::infinity();
    expected.*GetParam().field = {kLimit, -kLimit, 0.0F, 1.0F};
    EXPECT_EQ(decoded(GetParam().key, PropertyList::Array{1e300, -1e300, 1e-300, 1.0}), expected);
}

INSTANTIATE_TEST_SUITE_P(AllFields, ShaderUniformsVector,
                         testing::Values(VectorField{"tint", &ShaderUniforms::tint},
                                         VectorField{"color1", &ShaderUniforms::color1},
                                         VectorField{"color2", &ShaderUniforms::color2},
                                         VectorField{"color3", &ShaderUniforms::color3},
                                         VectorField{"background", &ShaderUniforms::background},
                                         VectorField{"params", &ShaderUniforms::params}),
                         [](const auto& vector) { return std::string(vector.param.key); });

TEST(ShaderUniforms, NarrowingRoundsAtTheEdgeOfTheFloatRangeAsIEEE754Does) {
    constexpr float kLargest = std::numeric_limits<float>::max();
    const double midpoint = 0x1.ffffffp127;
    const Float4 tint =
        decoded("tint", PropertyList::Array{static_cast<double>(kLargest),
                                            std::nextafter(midpoint, 0.0), midpoint, -midpoint})
            .tint;
    EXPECT_EQ(tint.x, kLargest);
    EXPECT_EQ(tint.y, kLargest);
    EXPECT_EQ(tint.z, std::numeric_limits<float>::infinity());
    EXPECT_EQ(tint.w, -std::numeric_limits<float>::infinity());
}

TEST(ShaderUniforms, CustomTakesThirtyTwoNumbersInSlotOrder) {
    const ShaderUniforms block = decoded("custom", counting(32));
    for (int i = 0; i < ShaderUniforms::customSlotCount; ++i) {
        EXPECT_EQ(block.custom(i), static_cast<float>(i + 1));
    }
}

TEST(ShaderUniforms, CustomOfAnotherLengthLeavesEverySlotZero) {
    for (const int count : {0, 1, 31, 33}) {
        EXPECT_EQ(decoded("custom", counting(count)), ShaderUniforms()) << count;
    }
}

TEST(ShaderUniforms, OneNumberThatIsNotFiniteVoidsAllOfCustom) {
    for (const double bad : {kNaN, kInfinity, -kInfinity}) {
        PropertyList::Array values = counting(32);
        values[17] = bad;
        EXPECT_EQ(decoded("custom", values), ShaderUniforms()) << bad;
    }
}

TEST(ShaderUniforms, OneValueThatIsNoNumberVoidsAllOfCustom) {
    PropertyList::Array values = counting(32);
    values[31] = "32";
    EXPECT_EQ(decoded("custom", values), ShaderUniforms());
}

TEST(ShaderUniforms, ACustomNumberBeyondTheFloatRangeLeavesOnlyItsSlotZero) {
    PropertyList::Array values = counting(32);
    values[9] = 1e300;
    values[10] = -1e300;
    const ShaderUniforms block = decoded("custom", values);
    for (int i = 0; i < ShaderUniforms::customSlotCount; ++i) {
        EXPECT_EQ(block.custom(i), i == 9 || i == 10 ? 0.0F : static_cast<float>(i + 1)) << i;
    }
}

TEST(ShaderUniforms, ABadFieldLeavesTheOthersAsTheyWereGiven) {
    PropertyListDictionary dictionary;
    dictionary.set("speed", PropertyList::Array{kNaN});
    dictionary.set("tint", PropertyList::Array{0.5, 0.5, 0.5, 0});
    dictionary.set("params", counting(3));
    const ShaderUniforms block = ShaderUniforms::fromLookPlist(dictionary);
    ShaderUniforms expected;
    expected.tint = {0.5F, 0.5F, 0.5F, 0.0F};
    EXPECT_EQ(block, expected);
}

TEST(ShaderUniforms, LookHoldsExactlyItsEightKeysWithTheirLengths) {
    const PropertyListDictionary dictionary = ShaderUniforms({1.0F, 2.0F}, 3.0F).lookPlist();
    EXPECT_EQ(dictionary.size(), 8U);
    for (const auto& [key, length] : {std::pair{"speed", 1U},
                                      {"tint", 4U},
                                      {"color1", 4U},
                                      {"color2", 4U},
                                      {"color3", 4U},
                                      {"background", 4U},
                                      {"params", 4U},
                                      {"custom", 32U}}) {
        const PropertyList* value = dictionary.find(key);
        ASSERT_NE(value, nullptr) << key;
        ASSERT_NE(value->array(), nullptr) << key;
        EXPECT_EQ(value->array()->size(), length) << key;
        for (const PropertyList& number : *value->array()) {
            EXPECT_NE(number.real(), nullptr) << key;
        }
    }
}

TEST(ShaderUniforms, LookWidensEachFloatExactly) {
    const PropertyListDictionary dictionary = ShaderUniforms().lookPlist();
    const PropertyList::Array expected{static_cast<double>(0.69F), static_cast<double>(0.42F), 1.0,
                                       1.0};
    EXPECT_EQ(*dictionary.find("color1")->array(), expected);
}

TEST(ShaderUniforms, DecodingItsOwnLookGivesTheBlockBackWithoutResolutionAndTime) {
    ShaderUniforms block({800.0F, 600.0F}, 99.0F);
    block.speed = -0.1F;
    block.tint = {0.1F, 0.2F, 0.3F, 0.4F};
    block.color1 = {1.1F, 1.2F, 1.3F, 1.4F};
    block.color2 = {2.1F, 2.2F, 2.3F, 2.4F};
    block.color3 = {3.1F, 3.2F, 3.3F, 3.4F};
    block.background = {4.1F, 4.2F, 4.3F, 4.4F};
    block.params = {5.1F, 5.2F, 5.3F, 5.4F};
    for (int i = 0; i < ShaderUniforms::customSlotCount; ++i) {
        block.setCustom(i, 0.1F * static_cast<float>(i) - 1.0F);
    }
    const ShaderUniforms back = ShaderUniforms::fromLookPlist(block.lookPlist());
    block.resolution = {};
    block.time = 0.0F;
    EXPECT_EQ(back, block);
}

} // namespace
} // namespace vantor
