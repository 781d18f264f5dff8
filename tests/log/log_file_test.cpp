#include "log/log_file.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace vantor {
namespace {

std::string contents(const std::filesystem::path& file) {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const std::filesystem::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
}

class LogFileTest : public testing::Test {
  protected:
    TemporaryFolder folder;
    const LogFile file{folder.path() / "Library" / "Logs" / "lockscreen.log"};
};

TEST_F(LogFileTest, CreatesItsFolderButNoFileBeforeTheFirstLine) {
    EXPECT_TRUE(std::filesystem::is_directory(file.path().parent_path()));
    EXPECT_FALSE(std::filesystem::exists(file.path()));
}

TEST_F(LogFileTest, TheFirstLineCreatesTheFileAndLaterOnesFollow) {
    file.append("one\n");
    file.append("two\n");
    EXPECT_EQ(contents(file.path()), "one\ntwo\n");
    EXPECT_FALSE(std::filesystem::exists(file.rotatedPath()));
}

TEST_F(LogFileTest, AFileOfTheLimitIsNotRotated) {
    const std::string old(524288, 'x');
    write(file.path(), old);
    file.append("next\n");
    EXPECT_EQ(contents(file.path()), old + "next\n");
    EXPECT_FALSE(std::filesystem::exists(file.rotatedPath()));
}

TEST_F(LogFileTest, AFileOneByteOverTheLimitIsRotatedBeforeTheNextLine) {
    const std::string old(524289, 'x');
    write(file.path(), old);
    file.append("next\n");
    EXPECT_EQ(contents(file.path()), "next\n");
    EXPECT_EQ(file.rotatedPath().filename(), "lockscreen.log.1");
    EXPECT_EQ(contents(file.rotatedPath()), old);
}

TEST_F(LogFileTest, AnOlderGenerationIsReplacedAtEachRotation) {
    write(file.rotatedPath(), "oldest");
    for (const char mark : {'a', 'b'}) {
        const std::string old(524289, mark);
        write(file.path(), old);
        file.append("next\n");
        EXPECT_EQ(contents(file.rotatedPath()), old);
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.path().parent_path()), {}), 2);
}

TEST_F(LogFileTest, WhatCannotBeWrittenIsSilent) {
    std::filesystem::create_directory(file.path());
    file.append("lost\n");
    EXPECT_TRUE(std::filesystem::is_directory(file.path()));
    std::filesystem::remove_all(folder.path());
    file.append("lost\n");
    EXPECT_FALSE(std::filesystem::exists(folder.path()));
}

TEST(LogFile, AFolderThatCannotBeMadeIsSilent) {
    const TemporaryFolder folder;
    write(folder.path() / "Library", "a file in the folder's place");
    const LogFile file(folder.path() / "Library" / "Logs" / "lockscreen.log");
    file.append("lost\n");
    EXPECT_TRUE(std::filesystem::is_regular_file(folder.path() / "Library"));
}

} // namespace
} // namespace vantor
