// The host application's seat: chooses what each display shows, writes it into the state file and
// tells the extension.

#include "library/app_state.h"
#include "library/lock_screen_library.h"
#include "platform/gpu.h"
#include "platform/notifications.h"
#include "platform/platform.h"
#include "render/shader_gpu.h"
#include "shaders/shader_catalog.h"
#include "tools/look_options.h"
#include "tools/shader_argument.h"
#include "tools/state_file.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace vantor {
namespace {

// Exit statuses; wrong usage is CLI11's own business and mapped to kUsage in main.
constexpr int kDone = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

int fail(const std::string& sentence) {
    std::cerr << sentence << (sentence.ends_with('\n') ? "" : "\n");
    return kFailed;
}

struct SetCommand {
    std::uint32_t display = 0;
    std::string shader;
    bool check = true;
    bool quiet = false;
    LookOptions look;
};

int set(Platform& platform, const SetCommand& command) {
    auto look = command.look.look();
    if (!look) {
        std::cerr << look.error() << '\n';
        return kUsage;
    }
    auto shader = findShader(command.shader);
    if (!shader) {
        return fail(shader.error());
    }
    if (command.check) {
        if (auto checked = checkShader(platform.gpu(), *shader); !checked) {
            return fail(checked.error());
        }
    }
    const std::filesystem::path file = appStateURL(platform);
    auto state = StateFile::read(platform.propertyLists(), file);
    if (!state) {
        return fail(state.error());
    }
    state->set(command.display,
               {.id = shader->id, .source = shader->source, .look = look->lookPlist()});
    if (auto written = state->write(platform.propertyLists(), file); !written) {
        return fail(written.error());
    }
    const bool told = platform.notifications().postDarwin(changedNotification(platform));
    if (!command.quiet) {
        std::cout << "display " << command.display << " shows " << shader->id << '\n';
        if (!told) {
            std::cout << "nobody could be told: there is no session bus; a wallpaper that runs "
                         "shows it after its next start\n";
        }
    }
    return kDone;
}

struct RenderCommand {
    std::string shader;
    std::string size = "1280x720";
    double time = 12;
    std::string out;
    LookOptions look;
};

/// Reads "WIDTHxHEIGHT" in pixels.
std::optional<Size> parseSize(std::string_view text) {
    constexpr unsigned kLargestSide = 16384;
    unsigned width = 0;
    unsigned height = 0;
    const char* const end = text.data() + text.size();
    const auto [cross, first] = std::from_chars(text.data(), end, width);
    if (first != std::errc() || cross == end || *cross != 'x') {
        return std::nullopt;
    }
    const auto [rest, second] = std::from_chars(cross + 1, end, height);
    if (second != std::errc() || rest != end || width == 0 || height == 0 || width > kLargestSide ||
        height > kLargestSide) {
        return std::nullopt;
    }
    return Size{.width = static_cast<double>(width), .height = static_cast<double>(height)};
}

int render(Platform& platform, const RenderCommand& command) {
    auto look = command.look.look();
    const auto size = parseSize(command.size);
    if (!look || !size) {
        std::cerr << (look ? "--size \"" + command.size +
                                 "\" is not WIDTHxHEIGHT with sides from 1 to 16384"
                           : look.error())
                  << '\n';
        return kUsage;
    }
    auto shader = findShader(command.shader);
    if (!shader) {
        return fail(shader.error());
    }
    ShaderGPU gpu(platform.gpu(), platform.images());
    if (!gpu.device()) {
        return fail("there is no GPU to draw with");
    }
    if (auto checked = checkShader(platform.gpu(), *shader); !checked) {
        return fail(checked.error());
    }
    if (!gpu.renderPNG(shader->id, shader->source, *look, *size, static_cast<float>(command.time),
                       command.out)) {
        return fail(command.out + " cannot be written");
    }
    return kDone;
}

void printLook(const PropertyListDictionary& look) {
    for (const auto& [key, value] : look) {
        std::cout << "    " << key;
        if (const auto* numbers = value.array()) {
            double number = 0;
            for (const PropertyList& element : *numbers) {
                if (element.numberAsDouble(number)) {
                    std::cout << ' ' << static_cast<float>(number);
                }
            }
        }
        std::cout << '\n';
    }
}

int show(Platform& platform) {
    const std::filesystem::path file = appStateURL(platform);
    auto state = StateFile::read(platform.propertyLists(), file);
    if (!state) {
        return fail(state.error());
    }
    std::cout << file.string() << '\n';
    const PropertyList* desktop = state->root().find("desktop");
    const PropertyListDictionary empty;
    const auto& section = desktop != nullptr ? *desktop->dictionary() : empty;
    if (const PropertyList* main = section.find("main"); main != nullptr && main->string()) {
        std::cout << "main display " << *main->string() << '\n';
    }
    const PropertyList* displays = section.find("displays");
    if (displays == nullptr || displays->dictionary()->empty()) {
        std::cout << "no display has a shader\n";
        return kDone;
    }
    for (const auto& [key, value] : *displays->dictionary()) {
        const auto* entry = value.dictionary();
        const PropertyList* id = entry != nullptr ? entry->find("id") : nullptr;
        const PropertyList* source = entry != nullptr ? entry->find("source") : nullptr;
        const PropertyList* look = entry != nullptr ? entry->find("look") : nullptr;
        std::cout << "display " << key << "  "
                  << (id != nullptr && id->string() ? *id->string() : "(no identifier)") << "  "
                  << (source != nullptr && source->string() ? source->string()->size() : 0)
                  << " bytes of source\n";
        if (look != nullptr && look->dictionary()) {
            printLook(*look->dictionary());
        }
    }
    return kDone;
}

int list() {
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        std::printf("%-30.*s %.*s\n", static_cast<int>(entry.id.size()), entry.id.data(),
                    static_cast<int>(entry.title.size()), entry.title.data());
    }
    return kDone;
}

int run(int argc, char** argv) {
    installPlatform(&systemPlatform());

    CLI::App app{"Chooses what each display's wallpaper shows."};
    app.set_version_flag("--version", std::string("vantorctl ") + VANTOR_VERSION);
    app.require_subcommand(1);
    app.footer("Exit status: 0 done, 1 it could not be done (the reason is on standard error), "
               "2 wrong usage.");

    SetCommand setting;
    CLI::App* setCommand = app.add_subcommand("set", "Chooses a display's shader and look");
    setCommand->add_option("--display", setting.display, "The display's identifier")
        ->required()
        ->type_name("N");
    setCommand
        ->add_option("shader", setting.shader, "A catalog entry's identifier, or a source file")
        ->required()
        ->type_name("SHADER");
    setCommand->add_flag("!--no-check", setting.check, "Write a shader that does not compile, too");
    setCommand->add_flag("--quiet", setting.quiet, "Say nothing when all is well");
    setting.look.addTo(*setCommand);

    RenderCommand rendering;
    CLI::App* renderCommand = app.add_subcommand("render", "Draws one frame into a PNG file");
    renderCommand
        ->add_option("shader", rendering.shader, "A catalog entry's identifier, or a source file")
        ->required()
        ->type_name("SHADER");
    renderCommand->add_option("--size", rendering.size, "Pixels, 1280x720 by default")
        ->type_name("WxH");
    renderCommand->add_option("--time", rendering.time, "Animation time in seconds, 12 by default")
        ->type_name("T");
    renderCommand->add_option("-o,--out", rendering.out, "The file to write")
        ->required()
        ->type_name("FILE.png");
    rendering.look.addTo(*renderCommand);

    CLI::App* showCommand = app.add_subcommand("show", "Prints what the state file holds");
    CLI::App* listCommand = app.add_subcommand("list", "Prints the catalog");

    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? kDone : kUsage;
    }
    if (*setCommand) {
        return set(platform(), setting);
    }
    if (*renderCommand) {
        return render(platform(), rendering);
    }
    if (*showCommand) {
        return show(platform());
    }
    return *listCommand ? list() : kUsage;
}

} // namespace
} // namespace vantor

int main(int argc, char** argv) {
    const int status = vantor::run(argc, argv);
    std::cout.flush();
    // Nothing is torn down: the GPU's threads live as long as the process.
    std::_Exit(status);
}
