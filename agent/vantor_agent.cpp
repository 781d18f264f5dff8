// The wallpaper agent's command.

#include "agent/kit/requests.h"
#include "agent/picker_command.h"
#include "agent/run_options.h"
#include "agent/wallpaper_agent.h"
#include "platform/linux/system/system_root.h"
#include "platform/platform.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <iostream>

namespace vantor::agent {
namespace {

constexpr const char* kFooter =
    "Exit status: 0 done, 1 it could not be done (the reason is on standard error), 2 wrong usage, "
    "3 the extension ended by itself.";

int usage(const std::string& sentence) {
    std::cerr << "vantor-agent: " << sentence << '\n';
    return static_cast<int>(RunStatus::usage);
}

/// What the command line said, as text.
struct Words {
    std::string output = "headless";
    std::vector<std::string> choices;
    std::string mode = "locked";
    std::optional<double> seconds;
    std::optional<double> unlockAfter;
    std::string out;
    std::string extension;
};

std::filesystem::path bundleFolder(const Words& words) {
    return words.extension.empty() ? systemRoot() / "VantorLockScreen.appex"
                                   : std::filesystem::path(words.extension);
}

Result<RunOptions, std::string> optionsFrom(const Words& words) {
    RunOptions options;
    auto displays = parseOutput(words.output);
    if (!displays) {
        return Failure{displays.error()};
    }
    options.displays = std::move(*displays);
    for (const std::string& text : words.choices) {
        auto choice = parseChoice(text);
        if (!choice) {
            return Failure{choice.error()};
        }
        if (choice->first > options.displays.size()) {
            return Failure{"choice \"" + text + "\" is for a display that is not there"};
        }
        options.choices.insert(std::move(*choice));
    }
    const auto modes = presentationModes();
    if (std::find(modes.begin(), modes.end(), words.mode) == modes.end()) {
        return Failure{"mode \"" + words.mode + "\" is not known"};
    }
    options.presentationMode = words.mode;
    if (words.seconds && (!std::isfinite(*words.seconds) || *words.seconds < 2)) {
        return Failure{std::string("--seconds is below 2")};
    }
    options.seconds = words.seconds;
    if (words.unlockAfter && !(*words.unlockAfter >= 0 && std::isfinite(*words.unlockAfter))) {
        return Failure{std::string("--unlock-after is not a time in seconds")};
    }
    options.unlockAfter = words.unlockAfter;
    if (!words.out.empty()) {
        options.out = words.out;
    }
    options.extension = bundleFolder(words);
    return options;
}

int run(int argc, char** argv) {
    installPlatform(&systemPlatform());

    CLI::App app{"Shows the extension's wallpapers."};
    app.set_version_flag("--version", std::string("vantor-agent ") + VANTOR_VERSION);
    app.require_subcommand(1);
    app.footer(kFooter);

    Words words;
    CLI::App* command = app.add_subcommand("run", "Starts the extension and shows its wallpapers");
    command->footer(kFooter);
    command->add_option("--output", words.output, "Where they are shown: virtual displays")
        ->type_name("headless[:WxH[@SCALE],…]");
    command->add_option("--choose", words.choices, "What a display shows")
        ->type_name("DISPLAY=ENTRY")
        ->expected(1)
        ->take_all();
    command->add_option("--mode", words.mode, "The presentation mode: locked, idle or default")
        ->type_name("MODE");
    command->add_option("--seconds", words.seconds, "Ends after that long; else at SIGINT")
        ->type_name("N");
    command
        ->add_option("--unlock-after", words.unlockAfter,
                     "Unlocks the screen after that long: animation pauses")
        ->type_name("N");
    command->add_option("--out", words.out, "Where two pictures of each display are written")
        ->type_name("DIR");
    CLI::App* picker =
        app.add_subcommand("picker", "Prints what the extension offers in the picker");
    picker->footer(kFooter);
    bool json = false;
    picker->add_flag("--json", json, "Print JSON, for programs");
    for (CLI::App* each : {command, picker}) {
        each->add_option("--extension", words.extension, "The extension's bundle folder")
            ->type_name("DIR");
    }
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : static_cast<int>(RunStatus::usage);
    }
    Platform& installed = platform();
    // The main queue of this platform is its main loop.
    auto& loop = static_cast<MainLoop&>(installed.mainQueue());
    if (picker->parsed()) {
        return static_cast<int>(printPicker(installed, loop, bundleFolder(words),
                                            json ? PickerFormat::json : PickerFormat::table));
    }
    auto options = optionsFrom(words);
    if (!options) {
        return usage(options.error());
    }
    WallpaperAgent agent(installed, loop, std::move(*options));
    return static_cast<int>(agent.run());
}

} // namespace
} // namespace vantor::agent

int main(int argc, char** argv) { return vantor::agent::run(argc, argv); }
