// The manual pages and the shells' completions, held against the program's own table of commands
// and what it reads.

#include "agent/command_line.h"
#include "agent/output/window/key_table.h"
#include "tests/support/program_documentation.h"

#include <gmock/gmock.h>

namespace vantor::agent {
namespace {

/// Made before what looks at it.
class WithCommandLine {
  protected:
    CommandLine line_;
};

class AgentDocumentation : private WithCommandLine, public ProgramDocumentation {
  protected:
    AgentDocumentation()
        : ProgramDocumentation("vantor-agent", "agent/completions", line_.description()) {}
};

TEST_F(AgentDocumentation, TheManualsAreWellFormed) {
    EXPECT_EQ(complaintsAboutManual("vantor-agent.1"), "");
    EXPECT_EQ(complaintsAboutManual("agent.toml.5"), "");
}

TEST_F(AgentDocumentation, TheManualHasExactlyTheProgramsCommandsAndOptions) { checkManual(); }

TEST_F(AgentDocumentation, TheManualHasTheKeysOfAWindow) {
    for (const KeyEntry& entry : keyTable()) {
        std::string item = "\n.It Li " + std::string(entry.keys[0].cap);
        if (!entry.keys[1].cap.empty()) {
            item += " , Li " + std::string(entry.keys[1].cap);
        }
        EXPECT_THAT(manual(), testing::HasSubstr(item + "\n" + std::string(entry.meaning) + ".\n"));
    }
}

TEST_F(AgentDocumentation, BashCompletesExactlyTheProgramsCommandsAndOptions) { checkBash(); }

TEST_F(AgentDocumentation, FishCompletesExactlyTheProgramsCommandsAndOptions) { checkFish(); }

TEST_F(AgentDocumentation, ZshKnowsExactlyTheProgramsCommandsAndOptions) { checkZsh(); }

TEST_F(AgentDocumentation, TheReadmeShowsEveryCommand) { checkReadme(); }

} // namespace
} // namespace vantor::agent
