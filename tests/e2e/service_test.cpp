// What the running extension may touch, what its menu opens, and how both processes take it when
// something around them fails.

#include "platform/linux/archive/plain_object.h"
#include "platform/linux/system/linux_workspace.h"
#include "tests/e2e/service.h"

#include <gtest/gtest.h>

#include <csignal>
#include <fcntl.h>
#include <linux/landlock.h>
#include <set>
#include <sstream>
#include <sys/mount.h>
#include <sys/syscall.h>

namespace vantor::e2e {
namespace {

using std::chrono::seconds;

bool kernelHasLandlock() {
    return syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION) > 0;
}

std::string statusLine(pid_t process, const std::string& name) {
    const std::string status = contents("/proc/" + std::to_string(process) + "/status");
    const std::size_t at = status.find("\n" + name + ":\t");
    return at == std::string::npos ? ""
                                   : status.substr(at + name.size() + 3, status.find('\n', at + 1) -
                                                                             at - name.size() - 3);
}

class ServiceTest : public Service {
  protected:
    bool menu(xpc::XPCClient& client, const char* item) {
        return !call(client, WallpaperOperation::invokeContextMenuAction,
                     {makePlainObject(*runtime_.classNamed("NSString"), PropertyList(item)),
                      nullptr})
                    .error;
    }
};

TEST_F(ServiceTest, TheExtensionHoldsNothingOfItsAgentsButTheLaunchSocket) {
    const FileDescriptor secret(open("/etc/hostname", O_RDONLY));
    ASSERT_TRUE(secret);
    start();
    ASSERT_TRUE(eventually([this] { return !log().empty(); }));
    for (const std::string& name : descriptors()) {
        EXPECT_NE(name, "/etc/hostname");
    }
    const pid_t extension = host().processIdentifier();
    EXPECT_EQ(statusLine(extension, "NoNewPrivs"), "1");
    const std::string environment = contents("/proc/" + std::to_string(extension) + "/environ");
    EXPECT_NE(environment.find("HOME=" + extensionHome().string() + '\0'), std::string::npos);
    EXPECT_EQ(environment.find("XDG_CACHE_HOME="), std::string::npos);
}

TEST_F(ServiceTest, TheMenuHasItsApplicationOpenedByTheAgent) {
    const auto applications = folder() / "data/applications";
    std::filesystem::create_directories(applications);
    std::ofstream(applications / "com.nimbara.app.desktop")
        << "[Desktop Entry]\nType=Application\nName=VantorEngine\nExec=touch "
        << (folder() / "started").string() << "\n";
    setenv("XDG_DATA_HOME", (folder() / "data").c_str(), 1);
    start();
    const auto agent = client();
    EXPECT_TRUE(menu(*agent, "open"));
    EXPECT_TRUE(menu(*agent, "x-open-app-y"));
    ASSERT_TRUE(eventually([this] { return !opened().empty(); }));
    EXPECT_EQ(opened(), (std::vector<std::string>{"com.nimbara.app"}));

    // As the agent does it.
    LinuxWorkspace workspace;
    const auto location = workspace.applicationLocation(opened().front());
    ASSERT_EQ(location, applications / "com.nimbara.app.desktop");
    workspace.openApplication(*location);
    EXPECT_TRUE(eventually([&] { return std::filesystem::exists(folder() / "started"); }));
}

TEST_F(ServiceTest, AnApplicationThatIsNotInstalledIsNotAskedFor) {
    setenv("XDG_DATA_HOME", (folder() / "data").c_str(), 1);
    start();
    const auto agent = client();
    EXPECT_TRUE(menu(*agent, "open-app"));
    // The answer to what comes later has overtaken nothing.
    EXPECT_TRUE(call(*agent, WallpaperOperation::isChoiceDownloaded).boolean);
    EXPECT_TRUE(opened().empty());
}

TEST_F(ServiceTest, WithoutAGPUEveryRequestIsAnsweredAndTheWallpaperIsBlack) {
    setenv("VK_DRIVER_FILES", "/nonexistent.json", 1);
    setenv("VK_ICD_FILENAMES", "/nonexistent.json", 1);
    start();
    unsetenv("VK_DRIVER_FILES");
    unsetenv("VK_ICD_FILENAMES");
    const auto agent = client();
    const auto acquired = acquire(*agent);
    EXPECT_EQ(acquired.error, std::nullopt);
    EXPECT_NE(acquired.object, nullptr);
    EXPECT_EQ(call(*agent, WallpaperOperation::provideSettingsViewModels).error, std::nullopt);
    EXPECT_EQ(drawableCount(), 0U);
    EXPECT_TRUE(isServing());
}

TEST_F(ServiceTest, AHomeThatTakesNoFilesCostsTheFilesOnly) {
    // Where the log's and the caches' folders would stand there is a file.
    std::filesystem::create_directories(extensionHome());
    std::ofstream(extensionHome() / "Library") << "in the way";
    start();
    const auto agent = client();
    EXPECT_EQ(acquire(*agent).error, std::nullopt);
    EXPECT_TRUE(eventually([this] { return drawableCount() > 0; }));
    EXPECT_EQ(call(*agent, WallpaperOperation::provideSettingsViewModels).error, std::nullopt);
    EXPECT_EQ(contents(extensionHome() / "Library"), "in the way");
}

TEST_F(ServiceTest, AHomeThatCannotBeMadeIsSaidBeforeAnythingStarts) {
    std::filesystem::create_directories(extensionHome().parent_path());
    std::ofstream(extensionHome()) << "in the way";
    auto started = launch::LaunchHost::start(loop(), {.bundle = bundle(), .home = extensionHome()},
                                             {.attached = {}, .ended = {}});
    ASSERT_FALSE(started);
    EXPECT_TRUE(started.error().starts_with("the extension's home ")) << started.error();
}

TEST_F(ServiceTest, AnEntryWithoutTheRuntimeSaysSoAndFails) {
    auto variables = environment();
    variables["HOME"] = extensionHome().string();
    const Outcome outcome = run({VANTOR_WITHOUT_RUNTIME}, variables);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_TRUE(log().ends_with("Z NSExtensionMain unavailable — cannot serve\n")) << log();
}

TEST_F(ServiceTest, AnExtensionThatIsStartedByHandSaysWhoStartsIt) {
    const Outcome outcome = run({bundle() / "VantorLockScreen"}, environment());
    EXPECT_EQ(outcome.status, 1);
    EXPECT_NE(outcome.errors.find("is started by the wallpaper agent"), std::string::npos)
        << outcome.errors;
}

/// A file system of its own over a folder; only root may have one.
class SmallDisk {
  public:
    explicit SmallDisk(const std::filesystem::path& folder) : folder_(folder) {
        std::filesystem::create_directories(folder);
        mounted_ = mount("none", folder.c_str(), "tmpfs", 0, "size=64k") == 0;
    }
    ~SmallDisk() {
        if (mounted_) {
            umount2(folder_.c_str(), MNT_DETACH);
        }
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    explicit operator bool() const { return mounted_; }
    /// Leaves no byte free.
    void fill() const {
        std::ofstream file(folder_ / "filler", std::ios::binary);
        for (const std::string page(4096, 'x'); file.write(page.data(), 4096) && file.flush();) {
        }
    }

  private:
    std::filesystem::path folder_;
    bool mounted_;
};

TEST_F(ServiceTest, AFullDiskCostsTheFilesOnlyAndTheLogGoesOnWhenThereIsRoom) {
    const SmallDisk disk(extensionHome());
    if (!disk) {
        GTEST_SKIP() << "no file system can be mounted";
    }
    disk.fill();
    start();
    const auto agent = client();
    EXPECT_EQ(acquire(*agent).error, std::nullopt);
    EXPECT_TRUE(eventually([this] { return drawableCount() > 0; }));
    EXPECT_EQ(log().find("ACQUIRE"), std::string::npos);
    std::filesystem::remove(extensionHome() / "filler");
    EXPECT_EQ(acquire(*agent).error, std::nullopt);
    EXPECT_TRUE(eventually([this] { return log().find("ACQUIRE") != std::string::npos; })) << log();
}

/// A small program that is launched as the extension is, and tries what the test names.
class ConfinementTest : public ServiceTest {
  protected:
    void SetUp() override {
        Service::SetUp();
        if (!kernelHasLandlock()) {
            GTEST_SKIP() << "this kernel offers no Landlock";
        }
        setenv("VANTOR_SYSTEM_ROOT", bundle().parent_path().c_str(), 1);
        std::filesystem::create_directories(home() / "Documents");
        std::ofstream(home() / "Documents/letter.txt") << "private";
        std::filesystem::create_directories(stateFile().parent_path());
        std::ofstream(stateFile()) << "state";
    }

    /// An attempt ("VERB PATH") and what comes of it ("ok", or the reason).
    using Attempts = std::vector<std::pair<std::string, std::string>>;

    void expectOutcomes(const Attempts& attempts) {
        std::filesystem::create_directories(extensionHome());
        std::string expected;
        std::ofstream tries(extensionHome() / "tries.txt");
        for (const auto& [attempt, outcome] : attempts) {
            tries << attempt << '\n';
            expected.append(attempt).append(": ").append(outcome).append("\n");
        }
        tries.close();
        std::optional<std::string> how;
        auto started = launch::LaunchHost::start(
            loop(), {.bundle = VANTOR_PROBE_BUNDLE, .home = extensionHome()},
            {.attached = {}, .ended = [&how](const std::string& end) { how = end; }});
        ASSERT_TRUE(started) << started.error();
        EXPECT_TRUE(eventually([&] { return how.has_value(); }));
        EXPECT_EQ(how, "exited with status 0");
        EXPECT_EQ(contents(extensionHome() / "found.txt"), expected);
    }

    const std::string denied = "Permission denied";
};

TEST_F(ConfinementTest, WritesBelowItsHomeAndNowhereElse) {
    const std::string document = home() / "Documents/letter.txt";
    expectOutcomes({{"write " + (extensionHome() / "Library/new/file").string(), "ok"},
                    {"remove " + (extensionHome() / "Library/new/file").string(), "ok"},
                    {"write /dev/null", "ok"},
                    {"write " + document, denied},
                    {"write " + stateFile().string(), denied},
                    {"write " + (home() / "new").string(), denied},
                    {"write /tmp/vantor-probe", denied},
                    {"write " + (bundle() / "Info.plist").string(), denied},
                    {"remove " + document, denied},
                    {"remove " + stateFile().string(), denied}});
    EXPECT_EQ(contents(document), "private");
    EXPECT_FALSE(std::filesystem::exists("/tmp/vantor-probe"));
}

TEST_F(ConfinementTest, ReadsTheStateAndTheSystemAndNothingOfTheUsers) {
    expectOutcomes({{"read " + stateFile().string(), "ok"},
                    {"read /etc/passwd", "ok"},
                    {"read /proc/self/status", "ok"},
                    {"read " + (bundle() / "Info.plist").string(), "ok"},
                    {"read " + (home() / "Documents/letter.txt").string(), denied},
                    {"read " VANTOR_BIN "/vantorctl", denied},
                    {"list " + home().string(), denied}});
}

TEST_F(ConfinementTest, StartsNoProgramsAndTalksToNoNetwork) {
    expectOutcomes({{"run /bin/true", denied}, {"connect 127.0.0.1", denied}});
}

class FaultTest : public Installation {
  protected:
    std::vector<std::string> agentCommand(const std::string& length) const {
        return {VANTOR_BIN "/vantor-agent",
                "run",
                "--output",
                "headless:64x36",
                "--mode",
                "locked",
                "--choose",
                "1=plasma",
                "--seconds",
                length,
                "--out",
                out().string()};
    }

    /// The extension's process, once it has a wallpaper.
    pid_t extensionOf(const Process& agent) const {
        EXPECT_TRUE(
            eventually([&] { return log().find("ACQUIRE") != std::string::npos; }, seconds(60)));
        const auto children = childrenOf(agent.pid());
        return children.empty() ? -1 : children.front();
    }

    double pictureDifference() const {
        return Picture::read(out() / "display-1-a.png")
            .difference(Picture::read(out() / "display-1-b.png"));
    }
};

TEST_F(FaultTest, AnAgentThatStandsStillForAWhileGoesOnWhereItWas) {
    Process agent(agentCommand("4"), environment());
    const pid_t extension = extensionOf(agent);
    agent.signal(SIGSTOP);
    std::this_thread::sleep_for(seconds(2));
    EXPECT_TRUE(isRunning(extension));
    agent.signal(SIGCONT);
    const Outcome outcome = agent.wait(seconds(60));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_GT(Picture::read(out() / "display-1-b.png").brightest(), 32);
    EXPECT_FALSE(isRunning(extension));
}

TEST_F(FaultTest, AnExtensionThatStandsStillForAWhileMovesAgain) {
    Process agent(agentCommand("6"), environment());
    const pid_t extension = extensionOf(agent);
    ::kill(extension, SIGSTOP);
    std::this_thread::sleep_for(seconds(1));
    ::kill(extension, SIGCONT);
    const Outcome outcome = agent.wait(seconds(60));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_GT(pictureDifference(), 0.1);
}

TEST_F(FaultTest, AWallClockThatJumpsADayForthAndBackMovesNothing) {
#ifdef VANTOR_JUMPING_CLOCK
    auto variables = environment();
    variables["LD_PRELOAD"] = VANTOR_JUMPING_CLOCK;
    const Outcome outcome = run(agentCommand("3"), variables);
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_GT(pictureDifference(), 0.1);
    // The log's moments are the wall clock's, so that the jumps did happen.
    std::set<std::string> days;
    std::istringstream lines(log());
    for (std::string line; std::getline(lines, line);) {
        days.insert(line.substr(0, line.find('T')));
    }
    EXPECT_GT(days.size(), 1U) << log();
#else
    GTEST_SKIP() << "nothing can be preloaded under a sanitizer";
#endif
}

TEST_F(FaultTest, AnExtensionThatHangsIsStartedAgainThoughNothingIsAskedOfIt) {
    std::vector<std::string> command = agentCommand("600");
    command.insert(command.end(), {"--patience", "2"});
    Process agent(command, environment());
    const pid_t extension = extensionOf(agent);
    ::kill(extension, SIGSTOP);
    EXPECT_TRUE(eventually([&] { return !isRunning(extension); }, seconds(60)));
    // The next one has the wallpaper, and draws it.
    pid_t next = -1;
    EXPECT_TRUE(eventually(
        [&] {
            const auto children = childrenOf(agent.pid());
            next = children.empty() ? -1 : children.front();
            return next != -1 && next != extension;
        },
        seconds(60)));
    EXPECT_TRUE(eventually(
        [&] { return log().find("ACQUIRE", log().find("ACQUIRE") + 1) != std::string::npos; },
        seconds(60)));
    std::this_thread::sleep_for(seconds(3));
    EXPECT_TRUE(isRunning(next)) << "it is taken for hanging though it draws";
    agent.signal(SIGTERM);
    const Outcome outcome = agent.wait(seconds(60));
    EXPECT_EQ(outcome.status, 0) << outcome.errors;
    EXPECT_NE(outcome.errors.find("the extension answered nothing for 2 s and was ended; it is "
                                  "started again in 0.25 s"),
              std::string::npos)
        << outcome.errors;
}

TEST_F(FaultTest, AnExtensionThatNeverMovesAgainIsEndedWithItsAgent) {
    Process agent(agentCommand("3"), environment());
    const pid_t extension = extensionOf(agent);
    ::kill(extension, SIGSTOP);
    const Outcome outcome = agent.wait(seconds(60));
    EXPECT_TRUE(outcome.status.has_value()) << "the agent hangs";
    EXPECT_FALSE(isRunning(extension));
}

} // namespace
} // namespace vantor::e2e
