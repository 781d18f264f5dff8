#pragma once
// What the user wrote into agent.toml. Any thread.

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor::agent {

/// What holds for the outputs that it names. A pattern may hold `*` and `?`; an absent one matches
/// every output.
struct OutputRule {
    std::optional<std::string> connector = {};
    std::optional<std::string> make = {};
    std::optional<std::string> model = {};

    /// The entry to show.
    std::optional<std::string> wallpaper = {};
    /// Frames a second at most; above 0.
    std::optional<double> maxFps = {};
    /// False leaves the output alone.
    std::optional<bool> enabled = {};

    bool operator==(const OutputRule&) const = default;
};

struct Configuration {
    /// Frames a second at most on every output; the display's own rate otherwise.
    std::optional<double> maxFps = {};
    /// Whether wallpapers move on the desktop, not only while the screen is locked.
    bool animateDesktop = true;
    /// Whether an output is paused while a full-screen window covers it.
    bool pauseWhenCovered = true;
    /// Whether everything is paused while the machine runs on its battery.
    bool pauseOnBattery = false;
    /// In the file's order; of several that match and say something, the first counts.
    std::vector<OutputRule> outputs = {};

    bool operator==(const Configuration&) const = default;
};

/// What the rules say about one output.
struct OutputSettings {
    std::optional<std::string> wallpaper = {};
    std::optional<double> maxFps = {};
    bool isEnabled = true;

    bool operator==(const OutputSettings&) const = default;
};

} // namespace vantor::agent
