#pragma once
// What `vantor-agent run` was asked for.

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

/// One virtual display. Its identifier is its place in the list, counted from 1.
struct DisplayMode {
    /// Pixels.
    std::uint32_t width = 1280;
    std::uint32_t height = 720;
    /// Pixels per point.
    double scale = 1.0;
    bool operator==(const DisplayMode&) const = default;
};

struct RunOptions {
    std::vector<DisplayMode> displays{DisplayMode{}};
    /// By display identifier; a display that is not named shows kDefaultChoice.
    std::map<std::uint32_t, std::string> choices;
    std::string presentationMode = "locked";
    /// Nothing runs until a signal.
    std::optional<double> seconds;
    /// When the screen is unlocked: the wallpapers are told, and their animation pauses.
    std::optional<double> unlockAfter;
    /// Where pictures go; nothing writes none.
    std::optional<std::filesystem::path> out;
    /// Refreshes per second of every display.
    std::uint32_t refreshRate = 60;
    /// The extension's bundle folder.
    std::filesystem::path extension;
};

inline constexpr std::string_view kDefaultChoice = "match-desktop";

/// Reads "headless" or "headless:WxH[@SCALE],…". The error is a sentence for the user.
Result<std::vector<DisplayMode>, std::string> parseOutput(std::string_view text);

/// Reads "DISPLAY=ENTRY".
Result<std::pair<std::uint32_t, std::string>, std::string> parseChoice(std::string_view text);

} // namespace vantor::agent
