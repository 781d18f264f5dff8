// vantorctl show

#include "library/app_state.h"
#include "library/desktop_state.h"
#include "platform/platform.h"
#include "tools/arguments.h"
#include "tools/commands.h"
#include "tools/state_file.h"

#include <CLI/CLI.hpp>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <ostream>
#include <sstream>
#include <utility>
#include <vector>

namespace vantor {
namespace {

using Json = nlohmann::ordered_json;

/// One display's entry as the extension reads it.
struct ShownDisplay {
    std::string key;
    std::string id;
    const Resolved* resolved = nullptr;
};

/// The entries that the extension can show, by display number; keys that are no number come last.
std::vector<ShownDisplay> shownDisplays(const StateFile& state, const DesktopState& desktop) {
    std::vector<ShownDisplay> shown;
    for (const auto& [key, resolved] : desktop.displays()) {
        const PropertyListDictionary& displays =
            *state.root().find("desktop")->dictionary()->find("displays")->dictionary();
        shown.push_back({key, *displays.find(key)->dictionary()->find("id")->string(), &resolved});
    }
    std::ranges::sort(shown, {}, [](const ShownDisplay& display) {
        const auto number = parseDisplay(display.key);
        return std::pair(number ? std::uint64_t{*number} : UINT64_MAX, display.key);
    });
    return shown;
}

/// What differs from the default look, a line for each, as the options of "set" are written.
std::string lookLines(const ShaderUniforms& look) {
    std::ostringstream text;
    const PropertyListDictionary standard = ShaderUniforms().lookPlist();
    for (const auto& [key, value] : look.lookPlist()) {
        if (value == *standard.find(key) || key == "custom") {
            continue;
        }
        text << "    " << key;
        char separator = ' ';
        for (const PropertyList& element : *value.array()) {
            text << std::exchange(separator, ',') << static_cast<float>(*element.real());
        }
        text << '\n';
    }
    for (int slot = 0; slot < ShaderUniforms::customSlotCount; ++slot) {
        if (look.custom(slot) != 0) {
            text << "    custom " << slot << '=' << look.custom(slot) << '\n';
        }
    }
    return text.str();
}

std::string listed(const std::set<std::string, std::less<>>& keys) {
    std::string text;
    for (const std::string& key : keys) {
        text += ' ' + key;
    }
    return text;
}

void printText(std::ostream& out, const std::filesystem::path& file, const StateFile& state) {
    const DesktopState desktop(state.root());
    out << file.string() << '\n';
    if (desktop.main()) {
        out << "main display " << *desktop.main() << '\n';
    }
    if (!desktop.nonShader().empty()) {
        out << "displays without a shader" << listed(desktop.nonShader()) << '\n';
    }
    const auto displays = shownDisplays(state, desktop);
    for (const ShownDisplay& display : displays) {
        out << "display " << display.key << "  " << display.id << "  "
            << display.resolved->source->size() << " bytes of source\n"
            << lookLines(display.resolved->uniforms);
    }
    if (displays.empty()) {
        out << "no display has a shader\n";
    }
}

/// A look as the state file holds it; a number that is not finite becomes null.
Json jsonOf(const ShaderUniforms& look) {
    Json json = Json::object();
    for (const auto& [key, value] : look.lookPlist()) {
        for (const PropertyList& element : *value.array()) {
            json[key].push_back(*element.real());
        }
    }
    return json;
}

std::string json(const std::filesystem::path& file, const StateFile& state) {
    const DesktopState desktop(state.root());
    Json displays = Json::object();
    for (const ShownDisplay& display : shownDisplays(state, desktop)) {
        displays[display.key] = {{"id", display.id},
                                 {"source", *display.resolved->source},
                                 {"look", jsonOf(display.resolved->uniforms)}};
    }
    const Json root{{"file", file.string()},
                    {"main", desktop.main() ? Json(*desktop.main()) : Json()},
                    {"nonShader", desktop.nonShader()},
                    {"displays", std::move(displays)}};
    // A file's name need not be UTF-8.
    return root.dump(2, ' ', false, Json::error_handler_t::replace) + '\n';
}

class ShowCommand : public Command {
  public:
    void describe(CLI::App& app) override {
        app.add_flag("--json", json_, "Print JSON, for programs, with every source and look");
    }

    ExitStatus run(Platform& platform, const Console& console) override {
        const std::filesystem::path file = appStateURL(platform);
        const auto state = StateFile::read(platform.propertyLists(), file);
        if (!state) {
            return console.fail(state.error());
        }
        if (json_) {
            console.out << json(file, state.value());
        } else {
            printText(console.out, file, state.value());
        }
        return ExitStatus::done;
    }

  private:
    bool json_ = false;
};

} // namespace

std::unique_ptr<Command> makeShowCommand() { return std::make_unique<ShowCommand>(); }

} // namespace vantor
