#pragma once
// What `vantor-agent run` was asked for.

#include "agent/supervision/answer_watch.h"
#include "platform/result.h"

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor::agent {

inline constexpr std::uint32_t kMaxDisplaySide = 16384;
inline constexpr std::size_t kMaxDisplays = 16;

/// One virtual display or window.
struct DisplayMode {
    /// Pixels; points of a window.
    std::uint32_t width = 1280;
    std::uint32_t height = 720;
    /// Pixels per point.
    double scale = 1.0;
    bool operator==(const DisplayMode&) const = default;
};

enum class OutputKind {
    /// Pictures in memory.
    headless,
    /// Windows, to try things out.
    window,
    /// The desktop of every display.
    background,
};

struct OutputRequest {
    OutputKind kind = OutputKind::headless;
    /// For `headless` and `window`. Their identifiers are their places in the list, from 1.
    std::vector<DisplayMode> displays{DisplayMode{}};
    bool operator==(const OutputRequest&) const = default;
};

struct RunOptions {
    OutputRequest output;
    /// By display identifier.
    std::map<std::uint32_t, std::string> choices;
    /// One of presentationModes(); nothing follows the lock and the configuration.
    std::optional<std::string> presentationMode;
    /// Frames a second at most on every output.
    std::optional<double> maxFps;
    /// Nothing runs until a signal.
    std::optional<double> seconds;
    /// When the screen is unlocked: the wallpapers are told, and their animation pauses.
    std::optional<double> unlockAfter;
    /// Where pictures go; nothing writes none.
    std::optional<std::filesystem::path> out;
    /// The configuration file; nothing for the user's own.
    std::optional<std::filesystem::path> configuration;
    /// Whether what was set aside is forgotten.
    bool isClean = false;
    /// Seconds until an extension that answers nothing is ended and started again.
    double patience = kPatience;
    /// Refreshes per second of virtual displays.
    std::uint32_t refreshRate = 60;
    /// The extension's bundle folder.
    std::filesystem::path extension;
};

/// Reads "headless" or "headless:WxH[@SCALE],…", "window" or "window:WxH,…", "background". The
/// error is a sentence for the user.
Result<OutputRequest, std::string> parseOutput(std::string_view text);

/// What is shown on without a word: windows where there is a display server.
OutputRequest defaultOutput();

/// Reads "DISPLAY=ENTRY".
Result<std::pair<std::uint32_t, std::string>, std::string> parseChoice(std::string_view text);

} // namespace vantor::agent
