// The manual page and the shells' completions, held against the program's own table of commands.

#include "tests/support/program_documentation.h"
#include "tools/command_line.h"

namespace vantor {
namespace {

/// Made before what looks at it.
class WithCommandLine {
  protected:
    CommandLine line_;
};

class Documentation : private WithCommandLine, public ProgramDocumentation {
  protected:
    Documentation() : ProgramDocumentation("vantorctl", "tools/completions", line_.description()) {}
};

TEST_F(Documentation, TheManualIsWellFormed) {
    EXPECT_EQ(complaintsAboutManual("vantorctl.1"), "");
}

TEST_F(Documentation, TheManualHasExactlyTheProgramsCommandsAndOptions) { checkManual(); }

TEST_F(Documentation, BashCompletesExactlyTheProgramsCommandsAndOptions) { checkBash(); }

TEST_F(Documentation, FishCompletesExactlyTheProgramsCommandsAndOptions) { checkFish(); }

TEST_F(Documentation, ZshKnowsExactlyTheProgramsCommandsAndOptions) { checkZsh(); }

TEST_F(Documentation, TheReadmeShowsEveryCommand) { checkReadme(); }

} // namespace
} // namespace vantor
