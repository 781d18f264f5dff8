// A running agent is asked, by its own commands, and does what it is told.

#include "tests/e2e/installation.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <memory>
#include <optional>

namespace vantor::e2e {
namespace {

using nlohmann::json;

/// A machine with everything at once takes its time.
constexpr std::chrono::seconds kPatience{90};

class ControlTest : public Installation {
  protected:
    /// Two small virtual displays. Returns when the agent can be asked.
    void startAgent() {
        agent_ = std::make_unique<Process>(std::vector<std::string>{VANTOR_BIN "/vantor-agent",
                                                                    "run", "--output",
                                                                    "headless:160x90,160x90"},
                                           environment());
        ASSERT_TRUE(eventually([this] { return status().has_value(); }, kPatience))
            << agent_->errors();
    }
    Outcome agentctl(std::vector<std::string> words) const {
        return command("vantor-agent", std::move(words));
    }
    /// Nothing while nobody answers.
    std::optional<json> status() const {
        const Outcome outcome = agentctl({"status", "--json"});
        return outcome.status == 0 ? std::optional(json::parse(outcome.output)) : std::nullopt;
    }
    bool eventuallyOutput(std::size_t index, const char* key, const json& value) const {
        return eventually([&] { return status()->at("outputs").at(index).at(key) == value; },
                          kPatience);
    }
    void configure(const std::string& text) const {
        std::filesystem::create_directories(configuration().parent_path());
        std::ofstream(configuration()) << text;
    }
    std::filesystem::path configuration() const { return home() / ".config/vantor/agent.toml"; }
    std::filesystem::path socket() const { return home() / ".local/state/vantor/agent.sock"; }

    std::unique_ptr<Process> agent_;
};

TEST_F(ControlTest, ARunningAgentDoesWhatItIsAskedAndSaysSo) {
    startAgent();
    const json first = *status();
    EXPECT_EQ(first.at("pid"), agent_->pid());
    EXPECT_EQ(first.at("outputKind"), "headless");
    EXPECT_EQ(first.at("outputs").size(), 2U);
    EXPECT_TRUE(eventuallyOutput(0, "activityState", "active"));

    EXPECT_EQ(agentctl({"choose", "2", "aurora"}).status, 0);
    EXPECT_TRUE(eventuallyOutput(1, "choice", "aurora"));
    EXPECT_EQ(agentctl({"pause"}).status, 0);
    EXPECT_TRUE(eventuallyOutput(1, "pauses", json::array({"asked"})));
    EXPECT_TRUE(eventuallyOutput(1, "activityState", "suspended"));
    EXPECT_EQ(agentctl({"resume"}).status, 0);
    EXPECT_EQ(agentctl({"unlock"}).status, 0);
    EXPECT_TRUE(eventuallyOutput(1, "pauses", json::array()));
    EXPECT_TRUE(eventuallyOutput(1, "presentationMode", "idle"));

    EXPECT_EQ(agentctl({"quit"}).status, 0);
    EXPECT_EQ(agent_->wait(kPatience).status, 0);
    EXPECT_FALSE(exists(socket()));
    EXPECT_EQ(agentctl({"status"}).status, 1);
}

TEST_F(ControlTest, AChoiceIsThereAfterTheNextStartUntilItIsTakenBack) {
    startAgent();
    EXPECT_EQ(agentctl({"choose", "headless-1", "plasma"}).status, 0);
    EXPECT_EQ(agentctl({"quit"}).status, 0);
    EXPECT_EQ(agent_->wait(kPatience).status, 0);

    startAgent();
    EXPECT_TRUE(eventuallyOutput(0, "choice", "plasma"));
    EXPECT_TRUE(eventuallyOutput(1, "choice", "match-desktop"));
    EXPECT_EQ(agentctl({"choose", "headless-1", "default"}).status, 0);
    EXPECT_TRUE(eventuallyOutput(0, "choice", "match-desktop"));
}

TEST_F(ControlTest, TheConfigurationIsFollowedAndItsFirstMistakeSaid) {
    startAgent();
    configure("[[output]]\nconnector = \"*-2\"\nwallpaper = \"aurora\"\n");
    EXPECT_TRUE(eventuallyOutput(1, "choice", "aurora"));

    configure("[[output]]\nwallpaper = 1\n");
    const std::string mistake =
        configuration().string() + ":2:13: wallpaper is 1, but must be a string";
    EXPECT_TRUE(
        eventually([&] { return status()->at("configurationError") == mistake; }, kPatience));
    const Outcome reloaded = agentctl({"reload"});
    EXPECT_EQ(reloaded.status, 1);
    EXPECT_EQ(reloaded.errors, "vantor-agent: " + mistake + "\n");
    EXPECT_TRUE(eventuallyOutput(1, "choice", "aurora")) << "what was in use stays";

    std::filesystem::remove(configuration());
    EXPECT_TRUE(eventuallyOutput(1, "choice", "match-desktop"));
    EXPECT_EQ(status()->at("configurationError"), "");
}

TEST_F(ControlTest, ThePickerIsTheRunningAgentsExtensions) {
    startAgent();
    const json extension = status()->at("extension").at("pid");
    const Outcome outcome = agentctl({"picker", "--json"});
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const json items = json::parse(outcome.output).at("desktop").at(0).at("items");
    EXPECT_EQ(items.size(), 12U);
    EXPECT_TRUE(std::filesystem::exists(items.at(11).at("thumbnailPath").get<std::string>()));
    EXPECT_EQ(outcome.errors, "") << "no extension of its own spoke";
    EXPECT_EQ(status()->at("extension").at("pid"), extension);
}

TEST_F(ControlTest, AnAgentThatWasKilledLeavesNothingInTheNextOnesWay) {
    startAgent();
    agent_->signal(SIGKILL);
    agent_->wait(kPatience);
    EXPECT_TRUE(exists(socket()));
    EXPECT_EQ(agentctl({"status"}).status, 1);
    startAgent();
    EXPECT_EQ(status()->at("pid"), agent_->pid());
}

} // namespace
} // namespace vantor::e2e
