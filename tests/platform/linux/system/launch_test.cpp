#include "platform/linux/launch/launch_channel.h"
#include "platform/linux/launch/launch_host.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <sstream>
#include <sys/socket.h>
#include <sys/stat.h>

namespace vantor::launch {
namespace {

struct Pair {
    FileDescriptor extension;
    FileDescriptor agent;
};

Pair makePair() {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends), 0);
    return {FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

LaunchRecord recordOf(Kind kind) {
    LaunchRecord record{};
    record.kind = kind;
    return record;
}

/// An extension's end that notes what it is told; the loop stops when the channel closes.
class LaunchChannelTest : public testing::Test {
  protected:
    void open() {
        ChannelHandlers handlers;
        handlers.connect = [this](FileDescriptor socket) {
            connections.push_back(std::move(socket));
        };
        handlers.attach = [](std::uint32_t contextID) -> std::optional<FileDescriptor> {
            if (contextID != 7) {
                return std::nullopt;
            }
            return FileDescriptor(dup(STDIN_FILENO));
        };
        handlers.screens = [this](std::span<const ScreenRecord> records) {
            screenCount = records.size();
            firstWidth = records.empty() ? 0 : records[0].width;
        };
        handlers.tick = [this](std::uint32_t display) { ticks.push_back(display); };
        handlers.closed = [this](const std::string& why) {
            reason = why;
            loop.stop(0);
        };
        channel =
            std::make_unique<LaunchChannel>(loop, std::move(pair.extension), std::move(handlers));
    }

    /// Sends raw bytes as the agent, then closes, and runs until the channel has noticed.
    void sendRaw(const void* bytes, std::size_t size) {
        ASSERT_EQ(send(pair.agent.get(), bytes, size, 0), static_cast<ssize_t>(size));
        pair.agent.reset();
        loop.run();
    }

    MainLoop loop;
    Pair pair = makePair();
    std::unique_ptr<LaunchChannel> channel;
    std::vector<FileDescriptor> connections;
    std::vector<std::uint32_t> ticks;
    std::size_t screenCount = 99;
    std::uint32_t firstWidth = 0;
    std::string reason;
};

TEST_F(LaunchChannelTest, HandsOnWhatTheAgentSaysAndAnswersAttachments) {
    open();
    const LaunchSocket agent(std::move(pair.agent));
    ASSERT_TRUE(agent.send(recordOf(Kind::connect), STDIN_FILENO));
    LaunchRecord screens = recordOf(Kind::screens);
    screens.screenCount = 2;
    screens.screens[0] = {.displayID = 1, .width = 640, .height = 360, .refreshRate = 60};
    ASSERT_TRUE(agent.send(screens));
    LaunchRecord tick = recordOf(Kind::tick);
    tick.displayID = 3;
    ASSERT_TRUE(agent.send(tick));
    LaunchRecord attach = recordOf(Kind::attach);
    attach.contextID = 7;
    ASSERT_TRUE(agent.send(attach));
    attach.contextID = 8;
    ASSERT_TRUE(agent.send(attach));
    loop.asyncAfter(0.05, [this] { loop.stop(0); });
    loop.run();

    EXPECT_EQ(connections.size(), 1U);
    EXPECT_EQ(screenCount, 2U);
    EXPECT_EQ(firstWidth, 640U);
    EXPECT_EQ(ticks, (std::vector<std::uint32_t>{3}));
    auto known = agent.receive();
    ASSERT_TRUE(std::holds_alternative<Received>(known));
    EXPECT_EQ(std::get<Received>(known).record.contextID, 7U);
    EXPECT_TRUE(std::get<Received>(known).descriptor);
    auto unknown = agent.receive();
    ASSERT_TRUE(std::holds_alternative<Received>(unknown));
    EXPECT_FALSE(std::get<Received>(unknown).descriptor);
    EXPECT_TRUE(std::holds_alternative<Nothing>(agent.receive()));
    EXPECT_EQ(reason, "");
}

TEST_F(LaunchChannelTest, APacketOfAnotherSizeClosesTheWire) {
    open();
    sendRaw("short", 5);
    EXPECT_EQ(reason, "a launch packet of 5 bytes is not the 404 of a record");
}

TEST_F(LaunchChannelTest, ALargerPacketClosesTheWire) {
    open();
    const std::vector<char> large(sizeof(LaunchRecord) + 1);
    sendRaw(large.data(), large.size());
    EXPECT_EQ(reason, "a packet is larger than any record");
}

TEST_F(LaunchChannelTest, AnUnknownKindClosesTheWire) {
    open();
    const LaunchRecord record = recordOf(static_cast<Kind>(77));
    sendRaw(&record, sizeof(record));
    EXPECT_EQ(reason, "a launch record has the unknown kind 77");
}

TEST_F(LaunchChannelTest, MoreScreensThanARecordHoldsCloseTheWire) {
    open();
    LaunchRecord record = recordOf(Kind::screens);
    record.screenCount = 0xFFFFFFFF;
    sendRaw(&record, sizeof(record));
    EXPECT_EQ(reason, "a launch record of 4294967295 screens exceeds the limit of 16");
}

TEST_F(LaunchChannelTest, AnIdentifierWithoutAnEndClosesTheWire) {
    open();
    LaunchRecord record = recordOf(Kind::tick);
    record.identifier.fill('a');
    sendRaw(&record, sizeof(record));
    EXPECT_EQ(reason, "a launch record's identifier has no end");
}

TEST_F(LaunchChannelTest, TheAgentIsAskedToOpenAnApplicationByItsWholeIdentifier) {
    open();
    const LaunchSocket agent(std::move(pair.agent));
    EXPECT_FALSE(channel->requestOpen(std::string(kIdentifierRoom, 'a')));
    EXPECT_TRUE(channel->requestOpen("com.nimbara.app"));
    auto asked = agent.receive();
    ASSERT_TRUE(std::holds_alternative<Received>(asked));
    EXPECT_EQ(std::get<Received>(asked).record.kind, Kind::open);
    EXPECT_STREQ(std::get<Received>(asked).record.identifier.data(), "com.nimbara.app");
    EXPECT_TRUE(std::holds_alternative<Nothing>(agent.receive()));
}

TEST_F(LaunchChannelTest, TheAgentIsToldHowFastADisplaysLinksRun) {
    open();
    const LaunchSocket agent(std::move(pair.agent));
    channel->tellLinks(3, 30);
    auto told = agent.receive();
    ASSERT_TRUE(std::holds_alternative<Received>(told));
    EXPECT_EQ(std::get<Received>(told).record.kind, Kind::links);
    EXPECT_EQ(std::get<Received>(told).record.displayID, 3U);
    EXPECT_EQ(std::get<Received>(told).record.frameRate, 30U);
}

TEST_F(LaunchChannelTest, ADescriptorWhereNoneBelongsClosesTheWire) {
    open();
    ASSERT_TRUE(LaunchSocket(std::move(pair.agent)).send(recordOf(Kind::tick), STDIN_FILENO));
    loop.run();
    EXPECT_EQ(reason, "a launch record carries 1 descriptors where none belongs");
    EXPECT_TRUE(ticks.empty());
}

TEST_F(LaunchChannelTest, AConnectWithoutASocketClosesTheWire) {
    open();
    const LaunchRecord record = recordOf(Kind::connect);
    sendRaw(&record, sizeof(record));
    EXPECT_EQ(reason, "a connect record carries no socket");
}

TEST_F(LaunchChannelTest, TheAgentsEndIsToldOnce) {
    open();
    pair.agent.reset();
    loop.run();
    EXPECT_EQ(reason, "the other process closed the socket");
}

/// A bundle whose program is a shell script.
class LaunchHostTest : public testing::Test {
  protected:
    std::filesystem::path bundle(const std::string& script) {
        const auto made = folder.path() / "Probe.appex";
        std::filesystem::create_directories(made);
        std::ofstream(made / "Probe") << "#!/bin/sh\n" << script;
        chmod((made / "Probe").c_str(), 0755);
        return made;
    }

    Result<std::unique_ptr<LaunchHost>, std::string> start(const std::string& script) {
        return LaunchHost::start(loop, {.bundle = bundle(script), .home = folder.path() / "home"},
                                 {.attached = [](std::uint32_t, FileDescriptor) {},
                                  .ended =
                                      [this](const std::string& how) {
                                          ended = how;
                                          loop.stop(0);
                                      }});
    }

    std::string read(const char* name) {
        std::ifstream stream(folder.path() / name);
        return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
    }

    TemporaryFolder folder;
    MainLoop loop;
    std::string ended;
};

TEST_F(LaunchHostTest, GivesTheProgramItsHomeOneSocketAndNothingElse) {
    const FileDescriptor stray(dup(STDIN_FILENO));
    auto host = start("echo \"$HOME $LISTEN_FDS\" > " + (folder.path() / "said").string() +
                      "\nls /proc/$$/fd > " + (folder.path() / "fds").string() + "\nexit 5\n");
    ASSERT_TRUE(host) << host.error();
    loop.run();
    EXPECT_EQ(ended, "exited with status 5");
    EXPECT_EQ(read("said"), (folder.path() / "home").string() + " 1\n");
    // The shell keeps files of its own from descriptor 10 on.
    std::istringstream listed(read("fds"));
    std::vector<int> low;
    for (int descriptor = 0; listed >> descriptor;) {
        if (descriptor < 10) {
            low.push_back(descriptor);
        }
    }
    EXPECT_EQ(low, (std::vector<int>{0, 1, 2, 3}));
    EXPECT_TRUE(std::filesystem::is_directory(folder.path() / "home"));
}

TEST_F(LaunchHostTest, SaysWhichSignalEndedTheProgram) {
    auto host = start("kill -9 $$\n");
    ASSERT_TRUE(host) << host.error();
    loop.run();
    EXPECT_EQ(ended, "was ended by signal 9");
}

TEST_F(LaunchHostTest, EndsAProgramThatDoesNotEndByItself) {
    pid_t pid = 0;
    {
        auto host = start("trap '' TERM\nwhile :; do sleep 0.05; done\n");
        ASSERT_TRUE(host) << host.error();
        pid = host.value()->processIdentifier();
    }
    EXPECT_NE(kill(pid, 0), 0);
}

TEST_F(LaunchHostTest, AMissingProgramIsASentence) {
    auto host =
        LaunchHost::start(loop, {.bundle = folder.path() / "No.appex", .home = folder.path()},
                          {.attached = {}, .ended = {}});
    ASSERT_FALSE(host);
    EXPECT_EQ(host.error(), (folder.path() / "No.appex/No").string() +
                                " cannot be started: No such file or directory");
}

} // namespace
} // namespace vantor::launch
