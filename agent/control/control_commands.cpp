#include "agent/control/control_commands.h"

#include "agent/complaint.h"
#include "agent/control/control_client.h"
#include "agent/control/control_socket.h"
#include "agent/control/status_json.h"
#include "agent/control/tables.h"
#include "agent/print.h"

#include <memory>
#include <string>
#include <utility>

namespace vantor::agent {
namespace {

using Arguments = std::vector<std::string>;

/// What the running agent answers.
Result<std::string, std::string> ask(const char* method, const Arguments& arguments = {}) {
    auto client = ControlClient::connect(controlSocketFile());
    if (!client) {
        return Failure{std::string("no agent runs (\"vantor-agent run\" starts one)")};
    }
    return client->call(method, arguments);
}

RunStatus tell(const char* method, const Arguments& arguments = {}) {
    const auto answer = ask(method, arguments);
    if (!answer) {
        complain(answer.error());
        return RunStatus::failed;
    }
    return RunStatus::done;
}

RunStatus printStatus(bool json) {
    const auto answer = ask("GetStatus");
    if (!answer) {
        complain(answer.error());
        return RunStatus::failed;
    }
    if (json) {
        return print(answer.value() + "\n");
    }
    const auto status = readStatusJson(answer.value());
    if (!status) {
        complain("the agent's status is no JSON object");
        return RunStatus::failed;
    }
    return print(statusTable(*status));
}

std::function<RunStatus()> addStatus(CLI::App& app) {
    const auto json = std::make_shared<bool>(false);
    CLI::App& command = *app.add_subcommand("status", "Prints what a running agent does");
    command.add_flag("--json", *json, "Print JSON, for programs");
    return [json] { return printStatus(*json); };
}

std::function<RunStatus()> addChoose(CLI::App& app) {
    struct Words {
        std::string output;
        std::string entry;
    };
    const auto words = std::make_shared<Words>();
    CLI::App& command = *app.add_subcommand("choose", "Chooses what an output shows, from now on");
    command.add_option("OUTPUT", words->output, "Its name (\"DP-1\") or its display's number")
        ->required();
    command
        .add_option("ENTRY", words->entry,
                    "An entry of the picker, or \"default\" for what the configuration says")
        ->required();
    return [words] { return tell("Choose", {words->output, words->entry}); };
}

std::function<RunStatus()> addPlain(CLI::App& app, const char* name, const char* method,
                                    const char* description) {
    app.add_subcommand(name, description);
    return [method] { return tell(method); };
}

} // namespace

std::vector<std::function<RunStatus()>> addControlCommands(CLI::App& app) {
    return {addStatus(app),
            addChoose(app),
            addPlain(app, "lock", "Lock", "Shows wallpapers as on a locked screen; locks nothing"),
            addPlain(app, "unlock", "Unlock", "Shows wallpapers as on the desktop"),
            addPlain(app, "pause", "Pause", "Lets nothing move until \"resume\""),
            addPlain(app, "resume", "Resume", "Ends \"pause\""),
            addPlain(app, "reload", "Reload", "Reads the configuration again"),
            addPlain(app, "quit", "Quit", "Ends the running agent")};
}

} // namespace vantor::agent
