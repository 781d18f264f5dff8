#include "agent/memory/memory_file.h"

#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace vantor::agent {
namespace {

using std::filesystem::perms;
using testing::HasSubstr;

class MemoryFileTest : public testing::Test {
  protected:
    std::filesystem::path file() const { return folder_.path() / "state/vantor/agent.json"; }
    std::filesystem::path kept(const char* ending) const {
        return folder_.path() / ("state/vantor/agent.json.damaged" + std::string(ending));
    }

    void write(const std::string& text) const {
        create_directories(file().parent_path());
        std::ofstream(file()) << text;
    }
    static std::string textOf(const std::filesystem::path& path) {
        std::ifstream stream(path);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    /// What is said of a file with that text. Nothing of it may be used, and nothing lost.
    std::string troubleWith(const std::string& text) const {
        std::filesystem::remove_all(folder_.path() / "state");
        write(text);
        const LoadedMemory loaded = loadMemory(file());
        EXPECT_EQ(loaded.memory, AgentMemory{});
        EXPECT_FALSE(exists(file()));
        EXPECT_EQ(textOf(kept("")), text);
        const std::string sentence = loaded.trouble.value_or("");
        const std::string start = file().string() + ": ";
        const std::string end = "; it is kept as agent.json.damaged";
        EXPECT_TRUE(sentence.starts_with(start) && sentence.ends_with(end)) << sentence;
        return sentence.substr(start.size(), sentence.size() - start.size() - end.size());
    }

    TemporaryFolder folder_;
};

TEST_F(MemoryFileTest, WhatIsSavedIsLoaded) {
    const AgentMemory memory{
        .choices = {{"DP-1", "builtin.smoke"}, {"HDMI-A-1", "match-desktop"}},
        .displayNumbers = {{"DP-1", 1}, {"HDMI-A-1", 4294967295}},
        .setAside = {{"DP-1", "aurora", "aurora of May", "It ended \"by signal 9\" five times."}}};
    ASSERT_TRUE(saveMemory(file(), memory));
    const LoadedMemory loaded = loadMemory(file());
    EXPECT_EQ(loaded.memory, memory);
    EXPECT_EQ(loaded.trouble, std::nullopt);
    EXPECT_EQ(status(file()).permissions(), perms(0600));
    EXPECT_EQ(status(file().parent_path()).permissions(), perms(0700));
}

TEST_F(MemoryFileTest, AFileThatIsNotThereIsAnEmptyMemory) {
    const LoadedMemory loaded = loadMemory(file());
    EXPECT_EQ(loaded.memory, AgentMemory{});
    EXPECT_EQ(loaded.trouble, std::nullopt);
}

TEST_F(MemoryFileTest, KeysThatAreNotKnownAreLeftOut) {
    write(R"({"choices": {"DP-1": "aurora"}, "later": [1, 2]})");
    const LoadedMemory loaded = loadMemory(file());
    EXPECT_EQ(loaded.trouble, std::nullopt);
    EXPECT_EQ(loaded.memory, (AgentMemory{.choices = {{"DP-1", "aurora"}}}));
    ASSERT_TRUE(saveMemory(file(), loaded.memory));
    EXPECT_EQ(textOf(file()).find("later"), std::string::npos);
}

TEST_F(MemoryFileTest, AFileThatCannotBeUnderstoodIsKeptUnderAnotherName) {
    EXPECT_EQ(troubleWith(""), "the text is no JSON");
    EXPECT_EQ(troubleWith(R"({"choices": {"DP-1": "auro)"), "the text is no JSON");
    EXPECT_EQ(troubleWith("\xff"), "the text is no JSON");
    EXPECT_EQ(troubleWith(std::string(1000000, '[')), "the text is no JSON");
    EXPECT_EQ(troubleWith("[]"), "the JSON is no object");
    EXPECT_EQ(troubleWith(R"({"choices": []})"), "\"choices\" is no object");
    EXPECT_EQ(troubleWith(R"({"choices": {"DP-1": 1}})"), "the choice of \"DP-1\" is no string");
    EXPECT_EQ(troubleWith(R"({"displayNumbers": 1})"), "\"displayNumbers\" is no object");
    for (const char* number : {"0", "-1", "1.5", "4294967296", "\"1\"", "null"}) {
        EXPECT_EQ(troubleWith(R"({"displayNumbers": {"DP-1": )" + std::string(number) + "}}"),
                  "the number of \"DP-1\" is none from 1 to 4294967295");
    }
    EXPECT_EQ(troubleWith(R"({"displayNumbers": {"a": 2, "b": 2}})"),
              "two displays have the number 2");
    EXPECT_EQ(troubleWith(R"({"setAside": {}})"), "\"setAside\" is no array");
    EXPECT_EQ(troubleWith(R"({"setAside": [1]})"),
              "an entry of \"setAside\" has no string \"connector\"");
    EXPECT_EQ(troubleWith(R"({"setAside": [{"connector": "a", "choice": 1}]})"),
              "an entry of \"setAside\" has no string \"choice\"");
}

TEST_F(MemoryFileTest, AFileThatIsTooLargeIsKeptUnderAnotherName) {
    EXPECT_EQ(troubleWith(std::string((1U << 20U) + 1, ' ')),
              "a file of more than 1048576 bytes exceeds the limit");
}

TEST_F(MemoryFileTest, ASecondDamagedFileDoesNotReplaceTheFirst) {
    write("one");
    loadMemory(file());
    write("two");
    EXPECT_THAT(*loadMemory(file()).trouble, HasSubstr("it is kept as agent.json.damaged-2"));
    EXPECT_EQ(textOf(kept("")), "one");
    EXPECT_EQ(textOf(kept("-2")), "two");
}

TEST_F(MemoryFileTest, AMemoryThatCouldNotBeLoadedIsNotSaved) {
    ASSERT_TRUE(saveMemory(file(), {.choices = {{"DP-1", "aurora"}}}));
    const AgentMemory large{.choices = {{"DP-1", std::string(1U << 20U, 'x')}}};
    const auto saved = saveMemory(file(), large);
    ASSERT_FALSE(saved);
    EXPECT_THAT(saved.error(), HasSubstr(" bytes exceeds the limit of 1048576"));
    EXPECT_EQ(loadMemory(file()).memory.choices.at("DP-1"), "aurora");
}

TEST_F(MemoryFileTest, ASaveThatFailsSaysWhy) {
    std::ofstream(folder_.path() / "state") << "no folder";
    const auto saved = saveMemory(file(), {});
    ASSERT_FALSE(saved);
    EXPECT_EQ(saved.error(), (folder_.path() / "state").string() + ": Not a directory");
}

TEST_F(MemoryFileTest, NamesThatAreNoTextAreSavedNearEnough) {
    ASSERT_TRUE(saveMemory(file(), {.choices = {{"DP-1", "\xff"}}}));
    EXPECT_EQ(loadMemory(file()).memory.choices.at("DP-1"), "\xEF\xBF\xBD");
}

TEST(MemoryFile, StandsInTheUsersStateFolder) {
    const ScopedVariable home("VANTOR_USER_HOME", "/given");
    EXPECT_EQ(memoryFile(), "/given/.local/state/vantor/agent.json");
}

TEST(DisplayNumber, IsRememberedOrTheLowestThatIsFree) {
    AgentMemory memory{.displayNumbers = {{"DP-1", 1}, {"DP-3", 3}}};
    EXPECT_EQ(displayNumber(memory, "DP-3"), 3U);
    EXPECT_EQ(displayNumber(memory, "DP-2"), 2U);
    EXPECT_EQ(displayNumber(memory, "DP-4"), 4U);
    EXPECT_EQ(displayNumber(memory, "DP-2"), 2U);
    EXPECT_EQ(memory.displayNumbers.size(), 4U);
}

} // namespace
} // namespace vantor::agent
