// The wallpaper agent's program.

#include "agent/picker_command.h"
#include "agent/run_command.h"
#include "platform/platform.h"

#include <CLI/CLI.hpp>

namespace vantor::agent {
namespace {

constexpr const char* kFooter =
    "Exit status: 0 done, 1 it could not be done (the reason is on standard error), 2 wrong usage, "
    "3 the extension had ended and did not run again, 4 the display server is gone.";

int run(int argc, char** argv) {
    installPlatform(&systemPlatform());

    CLI::App app{"Shows the extension's wallpapers."};
    app.set_version_flag("--version", std::string("vantor-agent ") + VANTOR_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);
    const std::function<RunStatus()> commands[] = {addRunCommand(app), addPickerCommand(app)};
    const auto subcommands = app.get_subcommands({});
    for (CLI::App* each : subcommands) {
        each->footer(kFooter);
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(RunStatus::usage);
    }
    for (std::size_t i = 0; i < subcommands.size(); ++i) {
        if (subcommands[i]->parsed()) {
            return static_cast<int>(commands[i]());
        }
    }
    return static_cast<int>(RunStatus::usage);
}

} // namespace
} // namespace vantor::agent

int main(int argc, char** argv) { return vantor::agent::run(argc, argv); }
