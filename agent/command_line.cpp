#include "agent/command_line.h"

#include "agent/control/control_commands.h"
#include "agent/picker_command.h"
#include "agent/run_command.h"

#include <string>

namespace vantor::agent {
namespace {

constexpr const char* kFooter =
    "Exit status: 0 done, 1 it could not be done (the reason is on standard error), 2 wrong usage, "
    "3 the extension had ended and did not run again, 4 the display server is gone.";

} // namespace

CommandLine::CommandLine() {
    app_.set_version_flag("--version", std::string("vantor-agent ") + VANTOR_VERSION);
    app_.require_subcommand(1);
    app_.footer(kFooter);
    commands_ = {addRunCommand(app_), addPickerCommand(app_)};
    const auto control = addControlCommands(app_);
    commands_.insert(commands_.end(), control.begin(), control.end());
    for (CLI::App* each : app_.get_subcommands({})) {
        each->footer(kFooter);
    }
}

RunStatus CommandLine::run(int argc, const char* const* argv) {
    try {
        app_.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app_.exit(error) == 0 ? RunStatus::done : RunStatus::usage;
    }
    const auto subcommands = app_.get_subcommands({});
    for (std::size_t i = 0; i < subcommands.size(); ++i) {
        if (subcommands[i]->parsed()) {
            return commands_[i]();
        }
    }
    return RunStatus::usage;
}

} // namespace vantor::agent
