#include "agent/picker_command.h"

#include "agent/complaint.h"
#include "agent/control/control_client.h"
#include "agent/control/control_socket.h"
#include "agent/control/picker_json.h"
#include "agent/control/tables.h"
#include "agent/extension_bundle.h"
#include "agent/extension_session.h"
#include "agent/print.h"
#include "platform/platform.h"

#include <memory>
#include <optional>
#include <string>

namespace vantor::agent {
namespace {

enum class Format { table, json };

/// An extension that was never asked before draws its pictures first.
constexpr ControlClient::Patience kPatience(120);

RunStatus printPicker(const Picker& picker, Format format) {
    return print(format == Format::table ? pickerTable(picker) : pickerJson(picker) + "\n");
}

RunStatus fail(const std::string& sentence) {
    complain(sentence);
    return RunStatus::failed;
}

RunStatus askAgent(ControlClient& agent, Format format) {
    const auto answer = agent.call("GetPicker", {}, kPatience);
    if (!answer) {
        return fail(answer.error());
    }
    const auto picker = readPickerJson(answer.value());
    return picker ? printPicker(*picker, format) : fail("the agent's picker is no JSON object");
}

RunStatus askExtension(const std::filesystem::path& extension, Format format) {
    Platform& installed = platform();
    // The main queue of this platform is its main loop.
    auto& loop = static_cast<MainLoop&>(installed.mainQueue());
    const auto stop = [&loop](RunStatus status) { loop.stop(static_cast<int>(status)); };
    auto session = ExtensionSession::start(loop, extensionLaunch(installed, extension), {},
                                           {.attached = [](std::uint32_t, const FileDescriptor&) {},
                                            .ended =
                                                [stop](const std::string& how) {
                                                    complain("the extension " + how);
                                                    stop(RunStatus::extensionEnded);
                                                }});
    if (!session) {
        return fail(session.error());
    }
    (*session)->picker([stop, format](const Result<Picker, std::string>& picker) {
        stop(picker ? printPicker(picker.value(), format) : fail(picker.error()));
    });
    return static_cast<RunStatus>(loop.run());
}

} // namespace

std::function<RunStatus()> addPickerCommand(CLI::App& app) {
    struct Words {
        bool json = false;
        std::string extension;
    };
    const auto words = std::make_shared<Words>();
    CLI::App& command =
        *app.add_subcommand("picker", "Prints what the extension offers in the picker");
    command.add_flag("--json", words->json, "Print JSON, for programs");
    addExtensionOption(command, words->extension);
    return [words] {
        const Format format = words->json ? Format::json : Format::table;
        if (words->extension.empty()) {
            if (auto agent = ControlClient::connect(controlSocketFile())) {
                return askAgent(*agent, format);
            }
        }
        return askExtension(bundleFolder(words->extension), format);
    };
}

} // namespace vantor::agent
