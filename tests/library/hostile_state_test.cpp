// State files that are torn, damaged or of another shape than the host application writes: a good
// file, changed in one place each.

#include "library/desktop_state.h"
#include "tests/library/state_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <map>
#include <random>

namespace vantor {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyListDictionary;

constexpr const char* kFirst = "v_main f_main first";
constexpr const char* kSecond = "v_main f_main second";

Dictionary look() {
    return {{"speed", Array{2.0}},
            {"tint", Array{0.5, 0.5, 0.5, 1.0}},
            {"custom", Array(32, PropertyList(3.0))}};
}

PropertyList goodState() {
    return Dictionary{
        {"desktop",
         Dictionary{
             {"main", "2"},
             {"nonShader", Array{"3"}},
             {"displays",
              Dictionary{{"1", Dictionary{{"id", "one"}, {"source", kFirst}, {"look", look()}}},
                         {"2", Dictionary{{"id", "two"}, {"source", kSecond}}}}}}}};
}

const char* const kXML = R"(<?xml version="1.0" encoding="UTF-8"?>
<plist version="1.0"><dict><key>desktop</key><dict><key>main</key><string>2</string>
<key>nonShader</key><array><string>3</string></array><key>displays</key><dict>
<key>1</key><dict><key>id</key><string>one</string><key>source</key><string>v_main f_main first</string>
<key>look</key><dict><key>speed</key><array><real>2</real></array></dict></dict>
<key>2</key><dict><key>id</key><string>two</string><key>source</key>
<string>v_main f_main second</string></dict></dict></dict></dict></plist>)";

const char* const kText = R"({ desktop = { main = 2; nonShader = (3); displays = {
 1 = { id = one; source = "v_main f_main first"; };
 2 = { id = two; source = "v_main f_main second"; }; }; }; })";

class HostileStateTest : public FakePlatformTest {
  protected:
    DesktopState stateOf(const Bytes& bytes) {
        writeStateBytes(platform, bytes);
        return DesktopState(readAppState(platform, appStateURL(platform)));
    }
    DesktopState stateOf(const PropertyList& root) {
        return stateOf(platform.propertyLists().writeBinary(root));
    }
    Bytes goodBinary() { return platform.propertyLists().writeBinary(goodState()); }
};

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

bool isEmpty(const DesktopState& state) {
    return state.displays().empty() && state.shader(std::nullopt) == nullptr &&
           !state.isNonShader(3) && !state.isNonShader(std::nullopt);
}

std::string keyOf(const DesktopState& state, std::optional<std::uint32_t> display) {
    const Resolved* resolved = state.shader(display);
    return resolved != nullptr ? resolved->key.substr(0, resolved->key.find('#')) : "nothing";
}

TEST_F(HostileStateTest, TheGoodFileIsGoodInEveryEncoding) {
    for (const Bytes& bytes : {goodBinary(), bytesOf(kXML), bytesOf(kText)}) {
        const DesktopState state = stateOf(bytes);
        EXPECT_EQ(keyOf(state, 1), "one");
        EXPECT_EQ(keyOf(state, std::nullopt), "two");
        EXPECT_TRUE(state.isNonShader(3));
    }
    const DesktopState state = stateOf(goodState());
    EXPECT_EQ(state.shader(1)->uniforms.speed, 2.0F);
    EXPECT_EQ(state.shader(1)->uniforms.custom(31), 3.0F);
}

/// One value of every kind.
const std::map<std::string, PropertyList> kKinds{
    {"a boolean", true},
    {"an integer", 1},
    {"a large integer", PropertyList(UINT64_MAX)},
    {"a real", 0.5},
    {"text", "text"},
    {"empty text", ""},
    {"data", Bytes{1, 2}},
    {"a date", PropertyList::Date{1}},
    {"an empty array", Array{}},
    {"an array of numbers", Array{1, 2}},
    {"an array of text and numbers", Array{"3", 3}},
    {"an empty dictionary", Dictionary{}},
    {"another dictionary", Dictionary{{"1", "2"}}},
};

/// Where a value is replaced, and what then holds when it is of a kind that does not belong there.
struct Place {
    std::vector<std::string> path;
    /// Kinds that do belong there.
    std::vector<std::string> allowed;
    std::function<bool(const DesktopState&)> holds;
};

PropertyList replaced(PropertyList root, const std::vector<std::string>& path,
                      const PropertyList& value) {
    if (path.empty()) {
        return value;
    }
    const std::vector<std::string> rest(path.begin() + 1, path.end());
    Dictionary& dictionary = *root.dictionary();
    dictionary.set(path[0], replaced(*dictionary.find(path[0]), rest, value));
    return root;
}

std::vector<Place> places() {
    const auto firstIsGone = [](const DesktopState& state) {
        return state.displays().size() == 1 && keyOf(state, 1) == "two";
    };
    const auto first = [](const DesktopState& state) { return state.shader(1)->uniforms; };
    return {
        {{}, {}, isEmpty},
        {{"desktop"}, {}, isEmpty},
        {{"desktop", "main"},
         {"text", "empty text"},
         [](const auto& state) { return keyOf(state, 9) == "one"; }},
        {{"desktop", "nonShader"}, {}, [](const auto& state) { return !state.isNonShader(3); }},
        {{"desktop", "displays"},
         {},
         [](const auto& state) { return state.displays().empty() && state.isNonShader(3); }},
        {{"desktop", "displays", "1"}, {}, firstIsGone},
        {{"desktop", "displays", "1", "id"}, {"text", "empty text"}, firstIsGone},
        {{"desktop", "displays", "1", "source"}, {"text"}, firstIsGone},
        {{"desktop", "displays", "1", "look"},
         {},
         [=](const auto& state) { return first(state) == ShaderUniforms(); }},
        {{"desktop", "displays", "1", "look", "speed"},
         {"an array of numbers"},
         [=](const auto& state) { return first(state).speed == 1.0F; }},
        {{"desktop", "displays", "1", "look", "tint"},
         {},
         [=](const auto& state) { return first(state).tint == ShaderUniforms().tint; }},
        {{"desktop", "displays", "1", "look", "custom"},
         {},
         [=](const auto& state) { return first(state).custom(31) == 0.0F; }},
    };
}

TEST_F(HostileStateTest, AValueOfAnotherKindLeavesItsDefaultAndNothingElse) {
    int variants = 0;
    for (const Place& place : places()) {
        for (const auto& [kind, value] : kKinds) {
            if (std::ranges::count(place.allowed, kind) > 0) {
                continue;
            }
            const DesktopState state = stateOf(replaced(goodState(), place.path, value));
            EXPECT_TRUE(place.holds(state)) << kind << " at " << testing::PrintToString(place.path);
            ++variants;
        }
    }
    EXPECT_GT(variants, 140);
    EXPECT_THAT(log(), testing::IsEmpty()) << "what was read is never called unreadable";
}

TEST_F(HostileStateTest, ATornFileGivesTheEmptyState) {
    const Bytes binary = goodBinary();
    for (std::size_t length = 0; length < binary.size(); length += 7) {
        EXPECT_TRUE(isEmpty(stateOf(Bytes(binary.begin(), binary.begin() + length)))) << length;
    }
    for (const std::string_view text : {kXML, kText}) {
        for (std::size_t length = 0; length + 1 < text.size(); length += 11) {
            EXPECT_TRUE(isEmpty(stateOf(bytesOf(text.substr(0, length))))) << length;
        }
    }
}

TEST_F(HostileStateTest, ADamagedFileGivesAStateThatHoldsOnlyWholeDisplays) {
    std::mt19937 random(20261121);
    for (const Bytes& good : {goodBinary(), bytesOf(kXML), bytesOf(kText)}) {
        for (int round = 0; round < 200; ++round) {
            Bytes bytes = good;
            for (int flips = 0; flips <= round % 4; ++flips) {
                bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
            }
            const DesktopState state = stateOf(bytes);
            for (const auto& [key, resolved] : state.displays()) {
                EXPECT_TRUE(resolved.source && !resolved.source->empty());
                EXPECT_NE(resolved.key.find('#'), std::string::npos);
            }
        }
    }
}

TEST_F(HostileStateTest, WhatIsNoListOrTooLargeOrTooDeepGivesTheEmptyState) {
    std::mt19937 random(7);
    Bytes noise(100'000);
    std::ranges::generate(noise, [&] { return static_cast<std::uint8_t>(random()); });
    Bytes huge(20U << 20U, ' ');
    const std::string deep = "{ desktop = " + std::string(100'000, '(');
    std::string deepXML = "<plist><dict><key>desktop</key>";
    for (int level = 0; level < 100'000; ++level) {
        deepXML += "<dict><key>displays</key>";
    }
    for (const Bytes& bytes : {noise, huge, bytesOf(deep), bytesOf(deepXML), Bytes{0},
                               bytesOf("bplist00"), bytesOf("\xef\xbb\xbf"), Bytes(32, 0xff)}) {
        EXPECT_TRUE(isEmpty(stateOf(bytes)));
    }
}

} // namespace
} // namespace vantor
