#include "log/ls_log.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

namespace vantor {
namespace {

std::string onlyLine(const std::filesystem::path& file) {
    std::ifstream stream(file);
    std::string line;
    std::string further;
    std::getline(stream, line);
    return std::getline(stream, further) ? "more than one line" : line;
}

// The process-wide log is made once: this suite, which runs first, makes it in its child only.
TEST(LSLogDeathTest, LinesWrittenBeforeAnExitReachTheFile) {
    const auto file =
        FakePlatform::shared().bundle().homeDirectory() / "Library" / "Logs" / "lockscreen.log";
    EXPECT_EXIT(
        {
            LSLog::write("NSExtensionMain unavailable — cannot serve");
            std::exit(1);
        },
        testing::ExitedWithCode(1), "");
    EXPECT_TRUE(onlyLine(file).ends_with("Z NSExtensionMain unavailable — cannot serve"))
        << onlyLine(file);
    std::filesystem::remove(file);
}

TEST(LSLogTest, WritesToTheUnifiedLogAndToTheFileInTheProcessesHome) {
    FakePlatform& platform = FakePlatform::shared();
    LSLog::write("accept pid 7");
    LSLog::flush();
    const auto lines = platform.unifiedLog().lines();
    ASSERT_EQ(lines.size(), 1U);
    EXPECT_EQ(lines[0].subsystem, "com.nimbara.app.lockscreen");
    EXPECT_EQ(lines[0].category, "extension");
    EXPECT_EQ(lines[0].message, "accept pid 7");
    const auto file = platform.bundle().homeDirectory() / "Library" / "Logs" / "lockscreen.log";
    EXPECT_TRUE(onlyLine(file).ends_with("Z accept pid 7"));
    EXPECT_FALSE(std::filesystem::exists(*platform.bundle().userDatabaseHome() / "Library"));
}

} // namespace
} // namespace vantor
