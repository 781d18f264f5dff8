#include "tools/state_file.h"

#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

namespace vantor {
namespace {

class StateFileTest : public FakePlatformTest {
  protected:
    PropertyListSerialization& lists() { return platform.propertyLists(); }
    std::filesystem::path file() { return platform.bundle().homeDirectory() / "a/b/state.plist"; }

    std::string textOf(const std::filesystem::path& path) {
        std::ifstream stream(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }
};

TEST_F(StateFileTest, WhatIsWrittenIsReadBackAndReplacedByDisplay) {
    StateFile state;
    state.set(2, {.id = "plasma", .source = "text", .look = {{"speed", PropertyList::Array{2.0}}}});
    state.set(2, {.id = "aurora", .source = "other", .look = {}});
    state.set(10, {.id = "plasma", .source = "text", .look = {}});
    ASSERT_TRUE(state.write(lists(), file()));

    auto read = StateFile::read(lists(), file());
    ASSERT_TRUE(read) << read.error();
    EXPECT_EQ(read->root(), state.root());
    const auto& displays =
        *read->root().find("desktop")->dictionary()->find("displays")->dictionary();
    ASSERT_EQ(displays.size(), 2U);
    EXPECT_EQ(*displays.find("2")->dictionary()->find("id")->string(), "aurora");
}

TEST_F(StateFileTest, AMissingFileIsAnEmptyState) {
    auto read = StateFile::read(lists(), file());
    ASSERT_TRUE(read);
    EXPECT_TRUE(read->root().empty());
}

TEST_F(StateFileTest, KeysThatAreNotOursStayAsTheyWere) {
    PropertyListDictionary root{
        {"version", 7}, {"desktop", PropertyListDictionary{{"main", "1"}, {"extra", true}}}};
    std::filesystem::create_directories(file().parent_path());
    const Bytes bytes = lists().writeBinary(root);
    std::ofstream(file(), std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()),
               static_cast<std::streamsize>(bytes.size()));

    auto state = StateFile::read(lists(), file());
    ASSERT_TRUE(state) << state.error();
    state->set(1, {.id = "plasma", .source = "text", .look = {}});
    EXPECT_EQ(*state->root().find("version"), PropertyList(7));
    EXPECT_EQ(*state->root().find("desktop")->dictionary()->find("main"), PropertyList("1"));
    EXPECT_EQ(*state->root().find("desktop")->dictionary()->find("extra"), PropertyList(true));
}

TEST_F(StateFileTest, AFileOfAnotherKindIsRefusedByNameAndLeftAlone) {
    std::filesystem::create_directories(file().parent_path());
    std::ofstream(file()) << "( just, a, list )";
    auto read = StateFile::read(lists(), file());
    ASSERT_FALSE(read);
    EXPECT_EQ(read.error(), file().string() + ": the property list is not a dictionary");
    EXPECT_EQ(textOf(file()), "( just, a, list )");
}

TEST_F(StateFileTest, AFailedWriteKeepsTheOldFileAndLeavesNothingBeside) {
    StateFile state;
    std::filesystem::create_directories(file());
    auto written = state.write(lists(), file());
    ASSERT_FALSE(written);
    EXPECT_TRUE(written.error().starts_with(file().string() + ": ")) << written.error();
    EXPECT_TRUE(std::filesystem::is_directory(file()));
    const std::filesystem::directory_iterator beside(file().parent_path());
    EXPECT_EQ(std::distance(begin(beside), end(beside)), 1);
}

} // namespace
} // namespace vantor
