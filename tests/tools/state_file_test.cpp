#include "tools/state_file.h"

#include "library/desktop_state.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <sys/resource.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

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
    void write(const std::string& text) {
        std::filesystem::create_directories(file().parent_path());
        std::ofstream(file(), std::ios::binary) << text;
    }
    void write(const PropertyListDictionary& root) {
        const Bytes bytes = lists().writeBinary(root);
        write(std::string(bytes.begin(), bytes.end()));
    }
    StateFile read() {
        auto state = StateFile::read(lists(), file());
        EXPECT_TRUE(state) << state.error();
        return std::move(*state);
    }
    Result<Done, std::string> set(std::uint32_t display, const DisplayChoice& choice) {
        return StateFile::edit(lists(), file(), [&](StateFile& state) -> Result<Done, std::string> {
            state.set(display, choice);
            return Done{};
        });
    }
    /// Everything in the state file's folder.
    std::ptrdiff_t filesBeside() {
        const std::filesystem::directory_iterator beside(file().parent_path());
        return std::distance(begin(beside), end(beside));
    }
};

DisplayChoice choice(std::string id) { return {.id = std::move(id), .source = "text", .look = {}}; }

TEST_F(StateFileTest, WhatIsWrittenIsReadBackAndReplacedByDisplay) {
    ASSERT_TRUE(set(2, choice("plasma")));
    ASSERT_TRUE(set(2, choice("aurora")));
    ASSERT_TRUE(set(10, choice("plasma")));
    const DesktopState desktop(read().root());
    ASSERT_EQ(desktop.displays().size(), 2U);
    EXPECT_TRUE(desktop.displays().at("2").key.starts_with("aurora#"));
    EXPECT_EQ(filesBeside(), 1) << "neither a lock nor a temporary file stays";
}

TEST_F(StateFileTest, AMissingFileIsAnEmptyState) { EXPECT_TRUE(read().root().empty()); }

TEST_F(StateFileTest, KeysThatAreNotOursOutliveSetAndUnset) {
    const PropertyListDictionary foreignEntry{{"brightness", 0.5}};
    const PropertyListDictionary foreignDisplays{{"3", foreignEntry}, {"note", "text"}};
    const PropertyListDictionary root{
        {"version", 7},
        {"desktop",
         PropertyListDictionary{{"extra", PropertyList::Date{4}}, {"displays", foreignDisplays}}}};
    write(root);
    ASSERT_TRUE(
        set(3, {.id = "plasma", .source = "text", .look = {{"speed", PropertyList::Array{2.0}}}}));

    const StateFile shown = read();
    const auto& displays =
        *shown.root().find("desktop")->dictionary()->find("displays")->dictionary();
    const auto& entry = *displays.find("3")->dictionary();
    EXPECT_EQ(*entry.find("id"), PropertyList("plasma"));
    EXPECT_EQ(*entry.find("brightness"), PropertyList(0.5));

    ASSERT_TRUE(StateFile::edit(lists(), file(), [](StateFile& state) -> Result<Done, std::string> {
        EXPECT_TRUE(state.unset(3));
        EXPECT_FALSE(state.unset(3)) << "only once";
        return Done{};
    }));
    EXPECT_EQ(read().root(), root);
}

TEST_F(StateFileTest, AForeignKeyOfALookOutlivesAnotherLook) {
    StateFile state;
    state.set(1, {.id = "plasma",
                  .source = "text",
                  .look = {{"speed", PropertyList::Array{2.0}}, {"grain", 4}}});
    state.set(1, {.id = "aurora", .source = "text", .look = {{"speed", PropertyList::Array{1.0}}}});
    const auto& displays =
        *state.root().find("desktop")->dictionary()->find("displays")->dictionary();
    const auto& look = *displays.find("1")->dictionary()->find("look")->dictionary();
    EXPECT_EQ(look, (PropertyListDictionary{{"speed", PropertyList::Array{1.0}}, {"grain", 4}}));
}

TEST_F(StateFileTest, UnsettingTheLastOfADisplaysKeysRemovesItsEntry) {
    StateFile state;
    state.set(1, choice("plasma"));
    state.set(2, choice("aurora"));
    EXPECT_TRUE(state.unset(1));
    EXPECT_FALSE(state.unset(7));
    const auto& displays =
        *state.root().find("desktop")->dictionary()->find("displays")->dictionary();
    EXPECT_EQ(displays.size(), 1U);
    EXPECT_NE(displays.find("2"), nullptr);
}

TEST_F(StateFileTest, TheMainDisplayIsNamedAndForgotten) {
    StateFile state;
    state.setMain(4294967295U);
    EXPECT_EQ(DesktopState(state.root()).main(), "4294967295");
    state.setMain(std::nullopt);
    EXPECT_EQ(DesktopState(state.root()).main(), std::nullopt);
}

TEST_F(StateFileTest, ADisplayIsOnceAmongThoseWithoutAShaderUntilItIsSet) {
    StateFile state;
    EXPECT_FALSE(state.setNonShader(2, false));
    EXPECT_TRUE(state.setNonShader(2, true));
    EXPECT_FALSE(state.setNonShader(2, true));
    EXPECT_TRUE(state.setNonShader(12, true));
    EXPECT_EQ(DesktopState(state.root()).nonShader().size(), 2U);
    state.set(2, choice("plasma"));
    EXPECT_FALSE(DesktopState(state.root()).isNonShader(2));
    EXPECT_TRUE(DesktopState(state.root()).isNonShader(12));
}

TEST_F(StateFileTest, AFileOfAnotherShapeIsRefusedByNameAndLeftAlone) {
    const struct {
        const char* text;
        const char* why;
    } files[] = {
        {"( just, a, list )", "the property list is not a dictionary"},
        {"{ desktop = ( a ); }", "\"desktop\" is not a dictionary"},
        {"{ desktop = { displays = text; }; }", "\"displays\" is not a dictionary"},
        {"{ desktop = { nonShader = 1; }; }", "\"nonShader\" is not an array of strings"},
        {"{ desktop = { nonShader = ( { a = b; } ); }; }",
         "\"nonShader\" is not an array of strings"},
    };
    for (const auto& [text, why] : files) {
        write(text);
        const auto edited = set(1, choice("plasma"));
        ASSERT_FALSE(edited) << text;
        EXPECT_EQ(edited.error(), file().string() + ": " + why);
        EXPECT_EQ(textOf(file()), text);
    }
}

TEST_F(StateFileTest, ATornFileIsRefusedAndLeftAlone) {
    ASSERT_TRUE(set(1, choice("plasma")));
    const std::string whole = textOf(file());
    for (std::size_t size = 1; size < whole.size(); size += 7) {
        write(whole.substr(0, size));
        EXPECT_FALSE(set(1, choice("aurora"))) << size;
        EXPECT_EQ(textOf(file()), whole.substr(0, size));
    }
}

TEST_F(StateFileTest, AChangeThatFailsLeavesTheFileAlone) {
    ASSERT_TRUE(set(1, choice("plasma")));
    const std::string before = textOf(file());
    const auto edited =
        StateFile::edit(lists(), file(), [](StateFile& state) -> Result<Done, std::string> {
            state.set(1, choice("aurora"));
            return Failure{std::string("no")};
        });
    ASSERT_FALSE(edited);
    EXPECT_EQ(edited.error(), "no");
    EXPECT_EQ(textOf(file()), before);
}

TEST_F(StateFileTest, AStateThatTheExtensionWouldNotReadIsNotWritten) {
    ASSERT_TRUE(set(1, choice("plasma")));
    const auto edited = set(2, {.id = "big", .source = std::string(17U << 20U, 'x'), .look = {}});
    ASSERT_FALSE(edited);
    EXPECT_NE(edited.error().find("exceeds the limit of 16777216"), std::string::npos)
        << edited.error();
    EXPECT_EQ(DesktopState(read().root()).displays().size(), 1U);
}

TEST_F(StateFileTest, AFullDiskKeepsTheOldFileAndLeavesNothingBeside) {
    ASSERT_TRUE(set(1, choice("plasma")));
    const std::string before = textOf(file());
    const pid_t child = fork();
    if (child == 0) {
        // To the writer, a file that may not grow is a disk that is full.
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{.rlim_cur = 64, .rlim_max = 64};
        setrlimit(RLIMIT_FSIZE, &limit);
        const auto edited = set(2, {.id = "big", .source = std::string(4096, 'x'), .look = {}});
        _exit(!edited && edited.error().starts_with(file().string() + ": ") ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
    EXPECT_EQ(textOf(file()), before);
    EXPECT_EQ(filesBeside(), 1);
}

TEST_F(StateFileTest, WritersAtOnceTakeTurnsAndNoneLosesItsChange) {
    constexpr std::uint32_t kWriters = 4;
    constexpr std::uint32_t kDisplaysEach = 10;
    std::vector<std::jthread> writers;
    for (std::uint32_t writer = 0; writer < kWriters; ++writer) {
        writers.emplace_back([this, writer] {
            for (std::uint32_t i = 0; i < kDisplaysEach; ++i) {
                EXPECT_TRUE(set(writer * kDisplaysEach + i, choice("plasma")));
            }
        });
    }
    writers.clear();
    EXPECT_EQ(DesktopState(read().root()).displays().size(), kWriters * kDisplaysEach);
    EXPECT_EQ(filesBeside(), 1);
}

TEST_F(StateFileTest, AFolderInTheFilesPlaceIsRefused) {
    std::filesystem::create_directories(file());
    const auto edited = set(1, choice("plasma"));
    ASSERT_FALSE(edited);
    EXPECT_TRUE(edited.error().starts_with(file().string() + ": ")) << edited.error();
    EXPECT_TRUE(std::filesystem::is_directory(file()));
    EXPECT_EQ(filesBeside(), 1);
}

} // namespace
} // namespace vantor
