// The commands as a person gives them, each a process, against a core of the test's own.

#include "agent/control/picker_json.h"
#include "agent/control/status_json.h"
#include "agent/control/tables.h"
#include "tests/agent/control/service_fixture.h"
#include "tests/e2e/process.h"

namespace vantor::agent {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class ControlCommands : public ServiceFixture {
  protected:
    /// Where the program looks for it below its home.
    std::filesystem::path usersSocket() const {
        return folder_.path() / ".local/state/vantor/agent.sock";
    }

    e2e::Outcome command(std::vector<std::string> words) {
        words.insert(words.begin(), VANTOR_BIN "/vantor-agent");
        e2e::Outcome outcome;
        during([&] { outcome = e2e::run(words, {{"VANTOR_USER_HOME", folder_.path().string()}}); });
        return outcome;
    }
};

TEST_F(ControlCommands, StatusIsPrintedForPeopleAndForPrograms) {
    controller_.now = fullStatus();
    serve(usersSocket());
    const auto table = command({"status"});
    EXPECT_EQ(table.status, 0) << table.errors;
    EXPECT_EQ(table.output, statusTable(fullStatus()));
    const auto json = command({"status", "--json"});
    EXPECT_EQ(json.status, 0) << json.errors;
    EXPECT_EQ(json.output, statusJson(fullStatus()) + "\n");
}

TEST_F(ControlCommands, EachReachesTheAgentAndSaysNothing) {
    serve(usersSocket());
    for (const char* word : {"lock", "unlock", "pause", "resume", "reload", "quit"}) {
        const auto outcome = command({word});
        EXPECT_EQ(outcome.status, 0) << word;
        EXPECT_EQ(outcome.output + outcome.errors, "") << word;
    }
    EXPECT_EQ(command({"choose", "DP-1", "builtin.smoke"}).status, 0);
    EXPECT_THAT(controller_.asked, ElementsAre("lock", "unlock", "pause", "resume", "reload",
                                               "quit", "choose DP-1 builtin.smoke"));
}

TEST_F(ControlCommands, AreAnsweredOverTheSessionBusToo) {
    const PrivateBus daemon("DBUS_SESSION_BUS_ADDRESS");
    serve(std::nullopt);
    EXPECT_EQ(command({"lock"}).status, 0);
    EXPECT_THAT(controller_.asked, ElementsAre("lock"));
}

TEST_F(ControlCommands, WhatTheAgentCannotDoItSaysWhy) {
    serve(usersSocket());
    controller_.answer = Failure{std::string("there is no output \"DP-7\"")};
    const auto outcome = command({"choose", "DP-7", "plasma"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.errors, "vantor-agent: there is no output \"DP-7\"\n");
    EXPECT_EQ(command({"reload"}).status, 1);
}

TEST_F(ControlCommands, PickerIsTheRunningAgents) {
    serve(usersSocket());
    controller_.offered = fullPicker();
    const auto table = command({"picker"});
    EXPECT_EQ(table.status, 0) << table.errors;
    EXPECT_EQ(table.output, pickerTable(fullPicker()));
    const auto json = command({"picker", "--json"});
    EXPECT_EQ(readPickerJson(json.output), fullPicker());

    controller_.offered = Failure{std::string("the extension does not run now")};
    const auto failed = command({"picker"});
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.errors, "vantor-agent: the extension does not run now\n");
}

TEST_F(ControlCommands, WithoutAnAgentSaySo) {
    for (const std::vector<std::string>& words : {std::vector<std::string>{"status"},
                                                  {"status", "--json"},
                                                  {"choose", "1", "x"},
                                                  {"lock"},
                                                  {"unlock"},
                                                  {"pause"},
                                                  {"resume"},
                                                  {"reload"},
                                                  {"quit"}}) {
        const auto outcome = command(words);
        EXPECT_EQ(outcome.status, 1) << words[0];
        EXPECT_EQ(outcome.output, "") << words[0];
        EXPECT_EQ(outcome.errors, "vantor-agent: no agent runs (\"vantor-agent run\" starts one)\n")
            << words[0];
    }
}

TEST_F(ControlCommands, OutputsAreCompletedFromTheRunningAgent) {
    controller_.now = fullStatus();
    serve(usersSocket());
    e2e::Outcome outcome;
    during([&] {
        outcome = e2e::run({"/bin/bash", "-c",
                            "source " VANTOR_SOURCE_FOLDER "/agent/completions/vantor-agent.bash\n"
                            "COMP_WORDS=(" VANTOR_BIN "/vantor-agent choose D)\n"
                            "COMP_CWORD=2\n_vantor_agent\necho ${COMPREPLY[@]}"},
                           {{"VANTOR_USER_HOME", folder_.path().string()}});
    });
    EXPECT_EQ(outcome.output, "DP-1\n") << outcome.errors;
}

TEST_F(ControlCommands, WronglyUsedSayHowTheyAreUsed) {
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{"choose", "DP-1"}, {"lock", "now"}, {"status", "--xml"}, {}}) {
        EXPECT_EQ(command(words).status, 2);
    }
    const auto help = command({"choose", "--help"});
    EXPECT_EQ(help.status, 0);
    EXPECT_THAT(help.output, HasSubstr("OUTPUT"));
}

} // namespace
} // namespace vantor::agent
