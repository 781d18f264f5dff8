#include "agent/run_options.h"

#include <charconv>
#include <cmath>

namespace vantor::agent {
namespace {

template <typename Number>
bool parseWhole(std::string_view text, Number& out) {
    const char* end = text.data() + text.size();
    const auto [rest, status] = std::from_chars(text.data(), end, out);
    return status == std::errc() && rest == end;
}

Result<DisplayMode, std::string> parseMode(std::string_view text) {
    const auto refuse = [text](std::string_view why) {
        return Failure{"display \"" + std::string(text) + "\" " + std::string(why)};
    };
    DisplayMode mode;
    std::string_view size = text;
    if (const auto at = text.find('@'); at != std::string_view::npos) {
        size = text.substr(0, at);
        if (!parseWhole(text.substr(at + 1), mode.scale) || !std::isfinite(mode.scale) ||
            mode.scale < 0.25 || mode.scale > 8.0) {
            return refuse("needs a scale from 0.25 to 8 after the @");
        }
    }
    const auto cross = size.find('x');
    if (cross == std::string_view::npos || !parseWhole(size.substr(0, cross), mode.width) ||
        !parseWhole(size.substr(cross + 1), mode.height)) {
        return refuse("is not of the form WIDTHxHEIGHT or WIDTHxHEIGHT@SCALE");
    }
    if (mode.width == 0 || mode.height == 0 || mode.width > kMaxDisplaySide ||
        mode.height > kMaxDisplaySide) {
        return refuse("has a side outside 1 to " + std::to_string(kMaxDisplaySide) + " pixels");
    }
    return mode;
}

} // namespace

Result<std::vector<DisplayMode>, std::string> parseOutput(std::string_view text) {
    const auto colon = text.find(':');
    const std::string_view kind = text.substr(0, colon);
    if (kind != "headless") {
        return Failure{"output \"" + std::string(kind) + "\" is not known (headless is)"};
    }
    std::vector<DisplayMode> displays;
    if (colon == std::string_view::npos) {
        displays.emplace_back();
        return displays;
    }
    std::string_view list = text.substr(colon + 1);
    while (true) {
        const auto comma = list.find(',');
        auto mode = parseMode(list.substr(0, comma));
        if (!mode) {
            return Failure{mode.error()};
        }
        if (displays.size() == kMaxDisplays) {
            return Failure{"more than " + std::to_string(kMaxDisplays) + " displays are given"};
        }
        displays.push_back(*mode);
        if (comma == std::string_view::npos) {
            return displays;
        }
        list.remove_prefix(comma + 1);
    }
}

Result<std::pair<std::uint32_t, std::string>, std::string> parseChoice(std::string_view text) {
    const auto equals = text.find('=');
    std::uint32_t display = 0;
    if (equals == std::string_view::npos || !parseWhole(text.substr(0, equals), display) ||
        display == 0 || equals + 1 == text.size()) {
        return Failure{"choice \"" + std::string(text) + "\" is not of the form DISPLAY=ENTRY"};
    }
    return std::pair{display, std::string(text.substr(equals + 1))};
}

} // namespace vantor::agent
