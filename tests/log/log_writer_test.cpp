#include "log/log_writer.h"
#include "tests/support/fake_system.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <thread>
#include <vector>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

class LogWriterTest : public testing::Test {
  protected:
    std::vector<std::string> lines() {
        writer.flush();
        std::ifstream stream(path);
        std::vector<std::string> found;
        for (std::string line; std::getline(stream, line);) {
            found.push_back(line);
        }
        return found;
    }

    TemporaryFolder folder;
    const std::filesystem::path path = folder.path() / "lockscreen.log";
    FakeUnifiedLog unifiedLog;
    LogWriter writer{unifiedLog.logger("subsystem", "category"), path};
};

TEST_F(LogWriterTest, ALineIsItsMomentABlankAndTheMessage) {
    writer.write("accept pid 42");
    EXPECT_THAT(lines(), ElementsAre(MatchesRegex("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:"
                                                  "[0-9]{2}Z accept pid 42")));
}

TEST_F(LogWriterTest, TheMomentIsTheTimeOfTheCall) {
    const std::string before = iso8601(std::chrono::system_clock::now());
    writer.write("now");
    const std::string after = iso8601(std::chrono::system_clock::now());
    const std::string moment = lines().at(0).substr(0, 20);
    EXPECT_LE(before, moment);
    EXPECT_LE(moment, after);
}

TEST_F(LogWriterTest, TheUnifiedLogTakesTheMessageAsItStands) {
    writer.write("  no offered wallpaper for nil — black");
    EXPECT_THAT(unifiedLog.messages(), ElementsAre("  no offered wallpaper for nil — black"));
}

TEST_F(LogWriterTest, TheFileIsWrittenWhereTheUnifiedLogIsSwitchedOff) {
    unifiedLog.setEnabled(false);
    writer.write("quiet");
    EXPECT_THAT(unifiedLog.messages(), ElementsAre());
    EXPECT_EQ(lines().size(), 1U);
}

TEST_F(LogWriterTest, TheUnifiedLogIsUntouchedByAFileThatCannotBeWritten) {
    std::filesystem::create_directory(path);
    writer.write("still there");
    writer.flush();
    EXPECT_TRUE(unifiedLog.contains("still there"));
}

TEST_F(LogWriterTest, LinesOfManyThreadsAreWholeAndKeepEachThreadsOrder) {
    constexpr int kThreads = 8;
    constexpr int kLines = 300;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
        threads.emplace_back([this, thread] {
            for (int line = 0; line < kLines; ++line) {
                writer.write("thread " + std::to_string(thread) + " line " + std::to_string(line));
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    std::map<int, int> next;
    const auto found = lines();
    ASSERT_EQ(found.size(), static_cast<std::size_t>(kThreads * kLines));
    for (const std::string& line : found) {
        int thread = -1;
        int number = -1;
        int end = 0;
        ASSERT_EQ(std::sscanf(line.c_str() + 20, " thread %d line %d%n", &thread, &number, &end), 2)
            << line;
        ASSERT_EQ(static_cast<std::size_t>(20 + end), line.size()) << line;
        ASSERT_EQ(number, next[thread]++);
    }
}

TEST(ISO8601Test, MomentsAreWrittenToTheSecondInUTC) {
    using namespace std::chrono;
    const auto moment = sys_days(2024y / May / 1) + 12h + 34min + 56s;
    EXPECT_EQ(iso8601(moment), "2024-05-01T12:34:56Z");
    EXPECT_EQ(iso8601(moment + 999ms), "2024-05-01T12:34:56Z");
    EXPECT_EQ(iso8601(system_clock::time_point{}), "1970-01-01T00:00:00Z");
    EXPECT_EQ(iso8601(system_clock::time_point{} - 1ms), "1969-12-31T23:59:59Z");
}

} // namespace
} // namespace vantor
