#include "agent/run_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <utility>

namespace vantor::agent {
namespace {

constexpr std::pair<std::string_view, OutputKind> kKinds[] = {
    {"headless", OutputKind::headless},
    {"window", OutputKind::window},
    {"background", OutputKind::background},
};

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

Result<OutputRequest, std::string> parseOutput(std::string_view text) {
    const auto colon = text.find(':');
    const std::string_view name = text.substr(0, colon);
    const auto known = std::find_if(std::begin(kKinds), std::end(kKinds),
                                    [name](const auto& entry) { return entry.first == name; });
    if (known == std::end(kKinds)) {
        return Failure{"output \"" + std::string(name) +
                       "\" is not known (headless, window and background are)"};
    }
    OutputRequest request{.kind = known->second};
    if (colon == std::string_view::npos) {
        return request;
    }
    if (request.kind == OutputKind::background) {
        return Failure{
            std::string("output background takes no sizes: its displays have their own")};
    }
    request.displays.clear();
    std::string_view list = text.substr(colon + 1);
    while (true) {
        const auto comma = list.find(',');
        auto mode = parseMode(list.substr(0, comma));
        if (!mode) {
            return Failure{mode.error()};
        }
        if (request.displays.size() == kMaxDisplays) {
            return Failure{"more than " + std::to_string(kMaxDisplays) + " displays are given"};
        }
        request.displays.push_back(*mode);
        if (comma == std::string_view::npos) {
            return request;
        }
        list.remove_prefix(comma + 1);
    }
}

OutputRequest defaultOutput() {
    const auto isSet = [](const char* name) {
        const char* value = std::getenv(name);
        return value != nullptr && *value != '\0';
    };
    return {.kind = isSet("WAYLAND_DISPLAY") || isSet("DISPLAY") ? OutputKind::window
                                                                 : OutputKind::headless};
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
