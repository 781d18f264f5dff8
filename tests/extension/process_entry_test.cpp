// A program of its own: a process is entered twice at most, and makes its shared objects once.

#include "extension/lock_screen_extension.h"
#include "extension/process_entry.h"
#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace vantor {
namespace {

constexpr int kRuntimeStatus = 7;

/// What the extension runtime was called with, and what its own call of the entry gave.
struct RuntimeCall {
    int argc = 0;
    char** argv = nullptr;
    int secondEntry = -1;
};
RuntimeCall runtimeCall;

int extensionMain(int argc, char** argv) {
    runtimeCall = {.argc = argc,
                   .argv = argv,
                   .secondEntry = processEntry(FakePlatform::shared(), argc, argv)};
    return kRuntimeStatus;
}

char programName[] = "VantorLockScreen";
char* arguments[] = {programName, nullptr};

std::string logFile() {
    std::ifstream file(FakePlatform::shared().bundle().home / "Library/Logs/lockscreen.log");
    return {std::istreambuf_iterator<char>(file), {}};
}

void offerRuntime() {
    FakePlatform::shared().loader().symbols["NSExtensionMain"] =
        reinterpret_cast<void*>(&extensionMain);
}

// These run in children, so that this process is entered by the last test only.
TEST(ProcessEntryDeathTest, WithoutTheRuntimeTheProcessLogsAndFails) {
    // Made here, so that the child writes into this process's folder.
    FakePlatform& platform = FakePlatform::shared();
    EXPECT_EXIT(std::exit(processEntry(platform, 1, arguments)), testing::ExitedWithCode(1), "");
    EXPECT_TRUE(logFile().ends_with("Z NSExtensionMain unavailable — cannot serve\n")) << logFile();
}

TEST(ProcessEntryDeathTest, ARuntimeThatCannotRunStopsTheProcess) {
    offerRuntime();
    FakePlatform::shared().appExtensionRuntime().failure = "no launch socket was passed";
    EXPECT_DEATH(processEntry(FakePlatform::shared(), 1, arguments), "no launch socket was passed");
    FakePlatform::shared().appExtensionRuntime().failure = std::nullopt;
}

TEST(ProcessEntryTest, TheFirstEntryHandsOverAndTheSecondServes) {
    FakePlatform& platform = FakePlatform::shared();
    offerRuntime();
    EXPECT_EQ(processEntry(platform, 1, arguments), kRuntimeStatus);
    EXPECT_EQ(runtimeCall.argc, 1);
    EXPECT_EQ(runtimeCall.argv, arguments);
    EXPECT_EQ(runtimeCall.secondEntry, 0);
    EXPECT_NE(dynamic_cast<LockScreenExtension*>(platform.appExtensionRuntime().principal.get()),
              nullptr);
}

} // namespace
} // namespace vantor
