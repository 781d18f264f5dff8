// The agent through changes and deaths at random moments. For longer than here is sensible, set
// VANTOR_SOAK_SECONDS.

#include "tests/e2e/desktop.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <random>

namespace vantor::e2e {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

std::chrono::seconds length() {
    const char* const asked = std::getenv("VANTOR_SOAK_SECONDS");
    return std::chrono::seconds(asked != nullptr ? std::atoi(asked) : 10);
}

/// A line of sway's configuration.
std::string setting(std::string output, std::string_view what, std::string_view value) {
    output.insert(0, "output ");
    return output.append(" ").append(what).append(" ").append(value);
}

struct Use {
    std::size_t descriptors = 0;
    /// KiB.
    std::size_t memory = 0;
};

Use useOf(pid_t process) {
    return {.descriptors = openDescriptors(process), .memory = residentMemory(process)};
}

class DesktopSoak : public Desktop {
  protected:
    DesktopSoak() {
        const auto seed = std::random_device()();
        std::cout << "seed " << seed << '\n';
        random_.seed(seed);
    }

    std::size_t below(std::size_t bound) {
        return std::uniform_int_distribution<std::size_t>(0, bound - 1)(random_);
    }
    template <std::size_t Size>
    std::string oneOf(const char* const (&choices)[Size]) {
        return choices[below(Size)];
    }

    /// Something that a person does.
    void change() {
        const std::string which = oneOf({"HEADLESS-1", "HEADLESS-2"});
        switch (below(7)) {
        case 0:
            // The other one may be disabled at the time.
            EXPECT_EQ(agentctl({"choose", "HEADLESS-1", oneOf(kEntries)}).status, 0);
            break;
        case 1:
            EXPECT_EQ(agentctl({oneOf({"lock", "unlock"})}).status, 0);
            break;
        case 2:
            EXPECT_EQ(agentctl({oneOf({"pause", "resume"})}).status, 0);
            break;
        case 3:
            sway_->command(setting(which, "mode", oneOf(kModes)));
            break;
        case 4:
            sway_->command(setting(which, "scale", oneOf(kScales)));
            break;
        case 5:
            configure(oneOf({"", "max_fps = 10\n", "desktop = \"still\"\n", "max_fps = oops\n",
                             "[[output]]\nconnector = \"*-2\"\nenabled = false\n"}));
            break;
        default:
            EXPECT_EQ(vantorctl({"set", "--display", oneOf({"1", "2"}), oneOf(kShaders)}).status,
                      0);
        }
    }
    /// As it was before anything changed.
    void settle() {
        configure("");
        for (const std::string output : {"HEADLESS-1", "HEADLESS-2"}) {
            sway_->command(setting(output, "mode", "320x180"));
            sway_->command(setting(output, "scale", "1"));
            ASSERT_TRUE(eventually([&] { return !this->output(output).is_null(); }));
            ASSERT_EQ(agentctl({"choose", output, "plasma"}).status, 0);
        }
        ASSERT_EQ(agentctl({"resume"}).status, 0);
        ASSERT_EQ(agentctl({"unlock"}).status, 0);
        ASSERT_TRUE(moves({"HEADLESS-1", "HEADLESS-2"}, 10));
    }

    static constexpr const char* kModes[] = {"320x180", "240x160", "200x300"};
    static constexpr const char* kScales[] = {"1", "1.25", "1.5", "2"};
    static constexpr const char* kShaders[] = {"plasma", "aurora", "builtin.smoke"};
    static constexpr const char* kEntries[] = {"plasma", "aurora", "match-desktop",
                                               "builtin.smoke"};

  private:
    std::mt19937 random_;
};

TEST_F(DesktopSoak, ChangesLeaveNothingBehindInEitherProcess) {
    startSway();
    startAgent();
    // Every kind of wallpaper, picture and swapchain has been there once.
    for (const char* entry : kEntries) {
        ASSERT_EQ(agentctl({"choose", "HEADLESS-1", entry}).status, 0);
        ASSERT_TRUE(moves({"HEADLESS-1"}, 2)) << entry;
    }
    for (const std::string output : {"HEADLESS-1", "HEADLESS-2"}) {
        for (const std::string mode : kModes) {
            for (const std::string scale : kScales) {
                sway_->command(setting(output, "mode", mode));
                sway_->command(setting(output, "scale", scale));
                ASSERT_TRUE(moves({output}, 2));
            }
        }
    }
    settle();
    const pid_t other = extension();
    const Use before[] = {useOf(agent_->pid()), useOf(other)};
    const auto end = steady_clock::now() + length();
    std::size_t changes = 0;
    while (steady_clock::now() < end && !HasFailure()) {
        change();
        ++changes;
        std::this_thread::sleep_for(milliseconds(below(600)));
    }
    settle();
    ASSERT_EQ(extension(), other) << agent_->errors();
    const Use after[] = {useOf(agent_->pid()), useOf(other)};
    for (int i = 0; i < 2; ++i) {
        std::cout << (i == 0 ? "agent" : "extension") << " after " << changes
                  << " changes: " << before[i].descriptors << " -> " << after[i].descriptors
                  << " descriptors, " << before[i].memory << " -> " << after[i].memory << " KiB\n";
        EXPECT_LE(after[i].descriptors, before[i].descriptors + 4);
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) && !defined(__clang__)
        EXPECT_LE(after[i].memory, before[i].memory + 16 * 1024);
#endif
    }
    EXPECT_EQ(endAgent().status, 0);
}

TEST_F(DesktopSoak, AnExtensionThatIsKilledAgainAndAgainComesBack) {
    startSway();
    startAgent({"--choose", "1=plasma"});
    ASSERT_TRUE(moves({"HEADLESS-1", "HEADLESS-2"}, 2));
    const auto end = steady_clock::now() + length();
    std::size_t kills = 0;
    const std::size_t descriptors = openDescriptors(agent_->pid());
    while (steady_clock::now() < end) {
        std::this_thread::sleep_for(milliseconds(below(1500)));
        ASSERT_TRUE(eventually([&] { return extension() > 0; })) << agent_->errors();
        if (const pid_t running = extension(); running > 0) {
            ::kill(running, SIGKILL);
            ++kills;
            // The kernel's word, for the agent may be about to start the next.
            ASSERT_TRUE(eventually([&] { return !isRunning(running); }));
        }
    }
    std::cout << kills << " kills\n";
    ASSERT_TRUE(moves({"HEADLESS-1", "HEADLESS-2"}, 2)) << agent_->errors();
    EXPECT_LE(openDescriptors(agent_->pid()), descriptors + 4);
    EXPECT_EQ(childrenOf(agent_->pid()).size(), 1U);
    const pid_t last = extension();
    EXPECT_EQ(endAgent().status, 0);
    EXPECT_FALSE(isRunning(last));
}

} // namespace
} // namespace vantor::e2e
