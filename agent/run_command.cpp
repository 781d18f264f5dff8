#include "agent/run_command.h"

#include "agent/extension_bundle.h"
#include "agent/kit/requests.h"
#include "agent/run_options.h"
#include "agent/wallpaper_agent.h"
#include "platform/platform.h"

#include <algorithm>
#include <cmath>
#include <iostream>
#include <memory>

namespace vantor::agent {
namespace {

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
    options.extension = bundleFolder(words.extension);
    return options;
}

RunStatus run(const Words& words) {
    auto options = optionsFrom(words);
    if (!options) {
        std::cerr << "vantor-agent: " << options.error() << '\n';
        return RunStatus::usage;
    }
    Platform& installed = platform();
    // The main queue of this platform is its main loop.
    WallpaperAgent agent(installed, static_cast<MainLoop&>(installed.mainQueue()),
                         std::move(*options));
    return agent.run();
}

} // namespace

std::function<RunStatus()> addRunCommand(CLI::App& app) {
    const auto words = std::make_shared<Words>();
    CLI::App& command = *app.add_subcommand("run", "Starts the extension and shows its wallpapers");
    command.add_option("--output", words->output, "Where they are shown: virtual displays")
        ->type_name("headless[:WxH[@SCALE],…]");
    command.add_option("--choose", words->choices, "What a display shows")
        ->type_name("DISPLAY=ENTRY")
        ->expected(1)
        ->take_all();
    command.add_option("--mode", words->mode, "The presentation mode: locked, idle or default")
        ->type_name("MODE");
    command.add_option("--seconds", words->seconds, "Ends after that long; else at SIGINT")
        ->type_name("N");
    command
        .add_option("--unlock-after", words->unlockAfter,
                    "Unlocks the screen after that long: animation pauses")
        ->type_name("N");
    command.add_option("--out", words->out, "Where two pictures of each display are written")
        ->type_name("DIR");
    addExtensionOption(command, words->extension);
    return [words] { return run(*words); };
}

} // namespace vantor::agent
