#include "agent/control/control_socket.h"

#include "tests/support/scoped_variable.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

namespace vantor::agent {
namespace {

using std::filesystem::perms;
using testing::HasSubstr;

class ControlSocketTest : public testing::Test {
  protected:
    std::filesystem::path file() const { return folder_.path() / "vantor/agent.sock"; }

    auto listen(const std::filesystem::path& where) {
        return ControlSocket::listen(loop_, where, [this](FileDescriptor) { ++accepted_; });
    }

    TemporaryFolder folder_;
    MainLoop loop_;
    int accepted_ = 0;
};

TEST_F(ControlSocketTest, IsItsUsersAlone) {
    const auto socket = listen(file());
    ASSERT_TRUE(socket) << socket.error().sentence;
    EXPECT_EQ(status(file()).permissions(), perms(0600));
    EXPECT_EQ(status(file().parent_path()).permissions(), perms(0700));
}

TEST_F(ControlSocketTest, HandsOverEachConnection) {
    const auto socket = listen(file());
    ASSERT_TRUE(socket);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_TRUE(connectToControlSocket(file()));
        loop_.turn();
        EXPECT_EQ(accepted_, i);
    }
}

TEST_F(ControlSocketTest, GoesWithItsOwner) {
    { const auto socket = listen(file()); }
    EXPECT_FALSE(exists(file()));
    EXPECT_FALSE(connectToControlSocket(file()));
}

TEST_F(ControlSocketTest, LeavesWhatTookItsPlace) {
    {
        const auto socket = listen(file());
        std::ofstream(file().string() + ".new") << "text";
        rename(file().string() + ".new", file());
    }
    EXPECT_TRUE(exists(file()));
}

TEST_F(ControlSocketTest, OfADeadAgentIsTakenOver) {
    {
        auto socket = listen(file());
        ASSERT_TRUE(socket);
        create_hard_link(file(), file().string() + ".dead");
    }
    rename(file().string() + ".dead", file());
    ASSERT_TRUE(is_socket(file()));
    const auto socket = listen(file());
    ASSERT_TRUE(socket) << socket.error().sentence;
    EXPECT_TRUE(connectToControlSocket(file()));
}

TEST_F(ControlSocketTest, OfALivingAgentIsNotTaken) {
    const auto first = listen(file());
    ASSERT_TRUE(first);
    const auto second = listen(file());
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().agent, getpid());
    EXPECT_TRUE(exists(file()));
}

TEST_F(ControlSocketTest, OfABusyAgentIsNotTaken) {
    const auto first = listen(file());
    ASSERT_TRUE(first);
    std::vector<FileDescriptor> callers;
    do {
        callers.push_back(connectToControlSocket(file()));
    } while (callers.back());
    const auto second = listen(file());
    ASSERT_FALSE(second);
    EXPECT_EQ(second.error().agent, 0);
    EXPECT_EQ(second.error().sentence, "an agent already runs, and does not answer");
}

TEST_F(ControlSocketTest, MayHaveALongName) {
    const auto longFile = folder_.path() / std::string(150, 'x') / "vantor/agent.sock";
    const auto socket = listen(longFile);
    ASSERT_TRUE(socket) << socket.error().sentence;
    EXPECT_TRUE(connectToControlSocket(longFile));
    EXPECT_FALSE(listen(longFile));
}

TEST_F(ControlSocketTest, IsNotPutWhereOthersCouldPutOne) {
    create_directory(file().parent_path());
    permissions(file().parent_path(), perms(0777));
    const auto socket = listen(file());
    ASSERT_FALSE(socket);
    EXPECT_EQ(socket.error().agent, std::nullopt);
    EXPECT_EQ(socket.error().sentence,
              file().parent_path().string() + ": others may write in this folder");
}

TEST_F(ControlSocketTest, SaysWhyThereCanBeNone) {
    std::ofstream(folder_.path() / "file") << "no folder";
    const auto socket = listen(folder_.path() / "file/agent.sock");
    ASSERT_FALSE(socket);
    EXPECT_THAT(socket.error().sentence, HasSubstr("Not a directory"));
}

TEST(ControlSocketFile, StandsInTheFolderOfSocketsOrOfState) {
    const ScopedVariable home("VANTOR_USER_HOME", std::nullopt);
    const ScopedVariable state("XDG_STATE_HOME", "/state");
    {
        const ScopedVariable runtime("XDG_RUNTIME_DIR", "/run/user/1");
        EXPECT_EQ(controlSocketFile(), "/run/user/1/vantor/agent.sock");
    }
    const ScopedVariable runtime("XDG_RUNTIME_DIR", std::nullopt);
    EXPECT_EQ(controlSocketFile(), "/state/vantor/agent.sock");
}

} // namespace
} // namespace vantor::agent
