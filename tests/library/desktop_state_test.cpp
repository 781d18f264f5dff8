#include "library/desktop_state.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

using Dictionary = PropertyListDictionary;
using Array = PropertyList::Array;

Dictionary display(const char* id, const char* source) {
    return {{.key = "id", .value = id}, {.key = "source", .value = source}};
}

/// The state of a "desktop" section.
DesktopState stateOf(Dictionary desktop) {
    return DesktopState(Dictionary{{.key = "desktop", .value = std::move(desktop)}});
}
DesktopState stateOfDisplays(Dictionary displays) {
    return stateOf({{.key = "displays", .value = std::move(displays)}});
}

TEST(DesktopStateTest, NothingAndAnEmptyFileGiveAnEmptyState) {
    for (const auto& appState : {std::optional<Dictionary>(), std::optional(Dictionary{})}) {
        const DesktopState state(appState);
        EXPECT_TRUE(state.displays().empty());
        EXPECT_EQ(state.main(), std::nullopt);
        EXPECT_TRUE(state.nonShader().empty());
        EXPECT_EQ(state.shader(1), nullptr);
        EXPECT_EQ(state.shader(std::nullopt), nullptr);
        EXPECT_FALSE(state.isNonShader(1));
        EXPECT_FALSE(state.isNonShader(std::nullopt));
    }
}

TEST(DesktopStateTest, ASectionOfAnotherTypeGivesAnEmptyState) {
    const DesktopState state(Dictionary{{.key = "desktop", .value = Array{"1"}}});
    EXPECT_TRUE(state.displays().empty());
    EXPECT_EQ(state.main(), std::nullopt);
}

TEST(DesktopStateTest, ADisplayCarriesItsSourceItsKeyAndItsLook) {
    Dictionary entry = display("builtin.plasma", "a");
    entry.set("look", Dictionary{{.key = "speed", .value = Array{0.5}}});
    const DesktopState state = stateOfDisplays({{.key = "1", .value = std::move(entry)}});
    const Resolved* shown = state.shader(1);
    ASSERT_NE(shown, nullptr);
    EXPECT_EQ(shown->key, "builtin.plasma#af63dc4c8601ec8c");
    EXPECT_EQ(shown->source, "a");
    EXPECT_EQ(shown->still, std::nullopt);
    EXPECT_EQ(shown->uniforms.speed, 0.5F);
    EXPECT_EQ(shown->uniforms.tint, ShaderUniforms().tint);
}

TEST(DesktopStateTest, WithoutALookOrWithOneOfAnotherTypeTheLookIsTheDefault) {
    Dictionary odd = display("x", "a");
    odd.set("look", Array{1.0});
    const DesktopState state = stateOfDisplays(
        {{.key = "1", .value = display("x", "a")}, {.key = "2", .value = std::move(odd)}});
    EXPECT_EQ(state.shader(1)->uniforms, ShaderUniforms());
    EXPECT_EQ(state.shader(2)->uniforms, ShaderUniforms());
}

TEST(DesktopStateTest, EntriesWithoutAnIdentifierOrASourceAreAbsent) {
    const DesktopState state = stateOfDisplays(
        {{.key = "1", .value = display("x", "")},
         {.key = "2", .value = Dictionary{{.key = "source", .value = "a"}}},
         {.key = "3", .value = Dictionary{{.key = "id", .value = "x"}}},
         {.key = "4", .value = "no dictionary"},
         {.key = "5",
          .value = Dictionary{{.key = "id", .value = 1}, {.key = "source", .value = "a"}}},
         {.key = "6",
          .value = Dictionary{{.key = "id", .value = "x"}, {.key = "source", .value = 1}}},
         {.key = "7", .value = display("x", "a")}});
    ASSERT_EQ(state.displays().size(), 1U);
    EXPECT_EQ(state.displays().begin()->first, "7");
}

TEST(DesktopStateTest, MembersOfAnotherTypeCountAsAbsent) {
    const DesktopState state = stateOf({{.key = "main", .value = 1},
                                        {.key = "nonShader", .value = Array{"1", 2}},
                                        {.key = "displays", .value = Array{}}});
    EXPECT_EQ(state.main(), std::nullopt);
    EXPECT_TRUE(state.nonShader().empty());
    EXPECT_TRUE(state.displays().empty());
}

TEST(DesktopStateTest, ADisplayOfItsOwnComesBeforeTheMainOneAndThatBeforeTheSmallest) {
    const DesktopState state =
        stateOf({{.key = "main", .value = "2"},
                 {.key = "displays",
                  .value = Dictionary{{.key = "1", .value = display("one", "a")},
                                      {.key = "2", .value = display("two", "b")}}}});
    EXPECT_EQ(state.shader(1)->source, "a");
    EXPECT_EQ(state.shader(2)->source, "b");
    EXPECT_EQ(state.shader(3)->source, "b");
    EXPECT_EQ(state.shader(std::nullopt)->source, "b");
}

TEST(DesktopStateTest, AMainDisplayThatShowsNothingLeavesItToTheSmallestKeyInStringOrder) {
    const Dictionary displays{{.key = "2", .value = display("two", "b")},
                              {.key = "10", .value = display("ten", "c")}};
    EXPECT_EQ(stateOfDisplays(displays).shader(std::nullopt)->source, "c");
    EXPECT_EQ(stateOfDisplays(displays).shader(99)->source, "c");
    const DesktopState state =
        stateOf({{.key = "main", .value = "99"}, {.key = "displays", .value = displays}});
    EXPECT_EQ(state.main(), "99");
    EXPECT_EQ(state.shader(std::nullopt)->source, "c");
}

TEST(DesktopStateTest, TheLargestDisplayIdentifierHasItsKey) {
    const DesktopState state =
        stateOfDisplays({{.key = "1", .value = display("one", "a")},
                         {.key = "4294967295", .value = display("last", "z")}});
    EXPECT_EQ(state.shader(4294967295U)->source, "z");
}

DesktopState withNonShader(Array keys, Dictionary displays) {
    return stateOf({{.key = "nonShader", .value = std::move(keys)},
                    {.key = "displays", .value = std::move(displays)}});
}

TEST(DesktopStateTest, ADisplayIsNonShaderWhenItsKeyIsListed) {
    const DesktopState state = withNonShader({"1"}, {});
    EXPECT_TRUE(state.isNonShader(1));
    EXPECT_FALSE(state.isNonShader(2));
}

TEST(DesktopStateTest, WithoutAnIdentifierAllDisplaysMustBeNonShader) {
    const Dictionary both{{.key = "1", .value = display("one", "a")},
                          {.key = "2", .value = display("two", "b")}};
    EXPECT_FALSE(withNonShader({"1"}, both).isNonShader(std::nullopt));
    EXPECT_TRUE(withNonShader({"1", "2"}, both).isNonShader(std::nullopt));
    EXPECT_TRUE(withNonShader({"1"}, {}).isNonShader(std::nullopt));
    EXPECT_FALSE(withNonShader({}, both).isNonShader(std::nullopt));
    EXPECT_FALSE(withNonShader({}, {}).isNonShader(std::nullopt));
}

TEST(DesktopStateTest, TheHashIsThePublishedOneWithoutLeadingZeros) {
    // Test vectors of the FNV reference code.
    EXPECT_EQ(DesktopState::stableHash(""), "cbf29ce484222325");
    EXPECT_EQ(DesktopState::stableHash("a"), "af63dc4c8601ec8c");
    EXPECT_EQ(DesktopState::stableHash("foobar"), "85944171f73967e8");
    // 'ö' is two bytes of UTF-8, both negative as signed characters; computed independently.
    EXPECT_EQ(DesktopState::stableHash("\xc3\xb6"), "ac20007b717f6ec");
}

} // namespace
} // namespace vantor
