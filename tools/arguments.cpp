#include "tools/arguments.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>

namespace vantor {
namespace {

/// Reads the whole text as decimal digits.
template <typename Number>
std::optional<Number> parseWhole(std::string_view text) {
    Number value = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, status] = std::from_chars(text.data(), end, value);
    return status == std::errc() && rest == end ? std::optional(value) : std::nullopt;
}

/// Reads "WIDTHxHEIGHT" in pixels.
std::optional<Size> parseSize(std::string_view text) {
    constexpr unsigned kLargestSide = 16384;
    const auto cross = text.find('x');
    if (cross == std::string_view::npos) {
        return std::nullopt;
    }
    const auto width = parseWhole<unsigned>(text.substr(0, cross));
    const auto height = parseWhole<unsigned>(text.substr(cross + 1));
    if (!width || !height || *width == 0 || *height == 0 || *width > kLargestSide ||
        *height > kLargestSide) {
        return std::nullopt;
    }
    return Size{.width = static_cast<double>(*width), .height = static_cast<double>(*height)};
}

} // namespace

std::optional<std::uint32_t> parseDisplay(std::string_view text) {
    return parseWhole<std::uint32_t>(text);
}

CLI::Option* addDisplay(CLI::App& app, const std::string& name, std::uint32_t& display) {
    const auto take = [name, &display](const std::string& text) {
        const auto parsed = parseDisplay(text);
        if (!parsed) {
            throw CLI::ValidationError(name, "\"" + text +
                                                 "\" is not a whole number from 0 to 4294967295");
        }
        display = *parsed;
    };
    return app.add_option_function<std::string>(name, take, "The display's identifier")
        ->type_name("N");
}

CLI::Option* addShader(CLI::App& app, std::string& shader) {
    return app.add_option("shader", shader, "A catalog entry's identifier, or a source file")
        ->required()
        ->type_name("SHADER");
}

void FrameOptions::addTo(CLI::App& app) {
    app.add_option("--size", size_, "Pixels, " + size_ + " by default")->type_name("WxH");
    app.add_option("--time", time_, "Animation time in seconds, 12 by default")->type_name("T");
}

std::optional<std::string> FrameOptions::parse() {
    const auto size = parseSize(size_);
    if (!size) {
        return "--size \"" + size_ + "\" is not WIDTHxHEIGHT with sides from 1 to 16384";
    }
    pixels_ = *size;
    if (!std::isfinite(time())) {
        return "--time is not a finite number";
    }
    return std::nullopt;
}

} // namespace vantor
