#include "platform/linux/system/user_home.h"

#include "tests/support/scoped_variable.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

class UserFolders : public testing::Test {
  protected:
    const ScopedVariable home_{"VANTOR_USER_HOME", std::nullopt};
    const ScopedVariable configuration_{"XDG_CONFIG_HOME", "/settings"};
    const ScopedVariable state_{"XDG_STATE_HOME", "/state"};
    const ScopedVariable runtime_{"XDG_RUNTIME_DIR", "/run/user/1"};
};

TEST_F(UserFolders, StandWhereTheVariablesSay) {
    EXPECT_EQ(userConfigurationFolder(), "/settings");
    EXPECT_EQ(userStateFolder(), "/state");
    EXPECT_EQ(userRuntimeFolder(), "/run/user/1");
}

TEST_F(UserFolders, StandInTheHomeWhereAVariableIsNotSetOrRelative) {
    const ScopedVariable configuration("XDG_CONFIG_HOME", "settings");
    const ScopedVariable state("XDG_STATE_HOME", std::nullopt);
    const ScopedVariable runtime("XDG_RUNTIME_DIR", "");
    EXPECT_EQ(userConfigurationFolder(), *userHome() / ".config");
    EXPECT_EQ(userStateFolder(), *userHome() / ".local/state");
    EXPECT_EQ(userRuntimeFolder(), std::nullopt);
}

TEST_F(UserFolders, AllStandBelowAGivenHome) {
    const ScopedVariable home("VANTOR_USER_HOME", "/given");
    EXPECT_EQ(userHome(), "/given");
    EXPECT_EQ(userConfigurationFolder(), "/given/.config");
    EXPECT_EQ(userStateFolder(), "/given/.local/state");
    EXPECT_EQ(userRuntimeFolder(), std::nullopt);
}

} // namespace
} // namespace vantor
