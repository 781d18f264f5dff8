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
    std::string output;
    std::vector<std::string> choices;
    std::string mode;
    std::optional<double> maxFps;
    std::optional<double> seconds;
    std::optional<double> unlockAfter;
    std::string out;
    std::string configuration;
    bool isClean = false;
    std::optional<double> patience;
    std::string extension;
};

Result<RunOptions, std::string> optionsFrom(const Words& words) {
    RunOptions options;
    options.output = defaultOutput();
    if (!words.output.empty()) {
        auto output = parseOutput(words.output);
        if (!output) {
            return Failure{output.error()};
        }
        options.output = std::move(*output);
    }
    const bool isHeadless = options.output.kind == OutputKind::headless;
    for (const std::string& text : words.choices) {
        auto choice = parseChoice(text);
        if (!choice) {
            return Failure{choice.error()};
        }
        if (options.output.kind != OutputKind::background &&
            choice->first > options.output.displays.size()) {
            return Failure{"choice \"" + text + "\" is for a display that is not there"};
        }
        options.choices.insert(std::move(*choice));
    }
    const auto modes = presentationModes();
    if (!words.mode.empty()) {
        if (std::find(modes.begin(), modes.end(), words.mode) == modes.end()) {
            return Failure{"mode \"" + words.mode + "\" is not known"};
        }
        options.presentationMode = words.mode;
    } else if (isHeadless) {
        options.presentationMode = "locked";
    }
    if (words.maxFps && !(*words.maxFps > 0 && std::isfinite(*words.maxFps))) {
        return Failure{std::string("--max-fps is not above 0")};
    }
    options.maxFps = words.maxFps;
    if (words.seconds && (!std::isfinite(*words.seconds) || *words.seconds < 2)) {
        return Failure{std::string("--seconds is below 2")};
    }
    options.seconds = words.seconds;
    if (words.unlockAfter && !(*words.unlockAfter >= 0 && std::isfinite(*words.unlockAfter))) {
        return Failure{std::string("--unlock-after is not a time in seconds")};
    }
    options.unlockAfter = words.unlockAfter;
    if (!words.out.empty()) {
        if (!isHeadless) {
            return Failure{std::string("--out needs --output headless: what is on a screen is not "
                                       "read back")};
        }
        options.out = words.out;
    }
    if (!words.configuration.empty()) {
        options.configuration = words.configuration;
    }
    options.isClean = words.isClean;
    if (words.patience && !(*words.patience > 0 && std::isfinite(*words.patience))) {
        return Failure{std::string("--patience is not above 0")};
    }
    options.patience = words.patience.value_or(options.patience);
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
    command
        .add_option("--output", words->output,
                    "Where they are shown: on virtual displays, in windows, or on the desktop; in "
                    "windows where there is a display server")
        ->type_name("headless[:WxH[@SCALE],…]|window[:WxH,…]|background");
    command.add_option("--choose", words->choices, "What a display shows")
        ->type_name("DISPLAY=ENTRY")
        ->expected(1)
        ->take_all();
    command
        .add_option("--mode", words->mode,
                    "The presentation mode: locked, idle or default; follows the lock else")
        ->type_name("MODE");
    command.add_option("--max-fps", words->maxFps, "Frames a second at most")->type_name("N");
    command.add_option("--seconds", words->seconds, "Ends after that long; else at SIGINT")
        ->type_name("N");
    command
        .add_option("--unlock-after", words->unlockAfter,
                    "Unlocks the screen after that long: animation pauses")
        ->type_name("N");
    command.add_option("--out", words->out, "Where two pictures of each display are written")
        ->type_name("DIR");
    command
        .add_option("--config", words->configuration,
                    "The configuration file; the user's vantor/agent.toml else")
        ->type_name("FILE");
    command.add_flag("--clean", words->isClean,
                     "Shows again what was set aside because the extension kept ending");
    command
        .add_option("--patience", words->patience,
                    "Starts an extension again that answered nothing for so long; 60 else")
        ->type_name("SECONDS");
    addExtensionOption(command, words->extension);
    return [words] { return run(*words); };
}

} // namespace vantor::agent
