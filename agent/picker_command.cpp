#include "agent/picker_command.h"

#include "agent/complaint.h"
#include "agent/extension_bundle.h"
#include "agent/extension_session.h"
#include "platform/platform.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <memory>

namespace vantor::agent {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const std::vector<PickerGroup>& groups) {
    Json list = Json::array();
    for (const PickerGroup& group : groups) {
        Json items = Json::array();
        for (const PickerItem& item : group.items) {
            items.push_back({{"id", item.id},
                             {"name", item.name},
                             {"description", item.description},
                             {"configuration", item.configuration},
                             {"provider", item.provider},
                             {"thumbnail", item.thumbnail},
                             {"badge", item.badge},
                             {"showInTopLevel", item.showInTopLevel},
                             {"sortOrder", item.sortOrder},
                             {"menu", item.menu}});
        }
        list.push_back({{"id", group.id},
                        {"name", group.name},
                        {"sortOrder", group.sortOrder},
                        {"items", std::move(items)}});
    }
    return list;
}

/// Columns that text takes on a terminal, near enough: its characters.
std::size_t columns(std::string_view text) {
    return static_cast<std::size_t>(std::ranges::count_if(
        text, [](char byte) { return (static_cast<unsigned char>(byte) & 0xc0U) != 0x80; }));
}

std::string padded(std::string_view text, std::size_t width) {
    return std::string(text) + std::string(width - columns(text), ' ');
}

std::string toTable(const std::vector<PickerGroup>& groups) {
    std::string out;
    for (const PickerGroup& group : groups) {
        std::size_t width = 0;
        std::size_t nameWidth = 0;
        for (const PickerItem& item : group.items) {
            width = std::max(width, columns(item.id));
            nameWidth = std::max(nameWidth, columns(item.name));
        }
        out += group.name + " (" + group.id + ")\n";
        for (const PickerItem& item : group.items) {
            out += "  " + padded(item.id, width) + "  " + padded(item.name, nameWidth) + "  " +
                   item.thumbnail + "\n";
        }
    }
    return out;
}

RunStatus printPicker(const std::filesystem::path& extension, PickerFormat format) {
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
        complain(session.error());
        return RunStatus::failed;
    }
    (*session)->picker([stop, format](const Result<Picker, std::string>& picker) {
        if (!picker) {
            complain(picker.error());
            stop(RunStatus::failed);
            return;
        }
        const std::string text = pickerText(picker.value(), format);
        const bool written = std::fwrite(text.data(), 1, text.size(), stdout) == text.size() &&
                             std::fflush(stdout) == 0;
        stop(written ? RunStatus::done : RunStatus::failed);
    });
    return static_cast<RunStatus>(loop.run());
}

} // namespace

std::string pickerText(const Picker& picker, PickerFormat format) {
    if (format == PickerFormat::table) {
        return toTable(picker.desktop);
    }
    const Json json{{"desktop", toJson(picker.desktop)},
                    {"screenSaver", toJson(picker.screenSaver)}};
    // What is no UTF-8 came from another program, and is no reason to say nothing.
    return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

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
        return printPicker(bundleFolder(words->extension),
                           words->json ? PickerFormat::json : PickerFormat::table);
    };
}

} // namespace vantor::agent
