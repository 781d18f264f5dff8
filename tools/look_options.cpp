#include "tools/look_options.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <cmath>
#include <string_view>

namespace vantor {
namespace {

bool parseFinite(std::string_view text, float& out) {
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, status] = std::from_chars(text.data(), end, value);
    out = static_cast<float>(value);
    return status == std::errc() && rest == end && std::isfinite(out);
}

/// Reads "a,b,c,d" into `out`; a text that was not given leaves it as it is.
std::optional<std::string> parseVector(const char* option, std::string_view text, Float4& out) {
    if (text.empty()) {
        return std::nullopt;
    }
    Float4 value;
    float* const components[] = {&value.x, &value.y, &value.z, &value.w};
    std::string_view rest = text;
    for (int i = 0; i < 4; ++i) {
        const auto comma = rest.find(',');
        const bool last = i == 3;
        if ((comma == std::string_view::npos) != last ||
            !parseFinite(rest.substr(0, comma), *components[i])) {
            return std::string(option) + " \"" + std::string(text) +
                   "\" is not four finite numbers separated by commas";
        }
        if (!last) {
            rest.remove_prefix(comma + 1);
        }
    }
    out = value;
    return std::nullopt;
}

std::optional<std::string> parseCustom(std::string_view text, ShaderUniforms& look) {
    const auto equals = text.find('=');
    int slot = 0;
    float value = 0;
    const std::string_view index = text.substr(0, equals);
    const auto [rest, status] = std::from_chars(index.data(), index.data() + index.size(), slot);
    if (equals == std::string_view::npos || status != std::errc() ||
        rest != index.data() + index.size() || slot < 0 ||
        slot >= ShaderUniforms::customSlotCount || !parseFinite(text.substr(equals + 1), value)) {
        return "--custom \"" + std::string(text) +
               "\" is not SLOT=VALUE with a slot from 0 to 31 and a finite value";
    }
    look.setCustom(slot, value);
    return std::nullopt;
}

} // namespace

void LookOptions::addTo(CLI::App& command) {
    const auto add = [&command](const char* name, auto& value, const char* type,
                                const char* description) {
        return command.add_option(name, value, description)->type_name(type)->group("Look");
    };
    add("--speed", speed_, "X", "Animation rate: 1 as designed, 0 stands still");
    add("--tint", tint_, "R,G,B,A", "Multiplies the picture, 1 leaves it");
    add("--color1", color1_, "R,G,B,A", "First palette colour, from 0 to 1");
    add("--color2", color2_, "R,G,B,A", "Second palette colour");
    add("--color3", color3_, "R,G,B,A", "Third palette colour");
    add("--background", background_, "R,G,B,A", "Background colour");
    add("--params", params_, "A,B,C,D", "The shader's four parameters");
    add("--custom", custom_, "SLOT=VALUE", "A custom slot from 0 to 31; may be repeated")
        ->expected(1)
        ->take_all();
}

Result<ShaderUniforms, std::string> LookOptions::look() const {
    ShaderUniforms look;
    if (speed_) {
        look.speed = static_cast<float>(*speed_);
        if (!std::isfinite(look.speed)) {
            return Failure{std::string("--speed is not a finite number")};
        }
    }
    const struct {
        const char* option;
        const std::string& text;
        Float4& field;
    } vectors[] = {
        {"--tint", tint_, look.tint},
        {"--color1", color1_, look.color1},
        {"--color2", color2_, look.color2},
        {"--color3", color3_, look.color3},
        {"--background", background_, look.background},
        {"--params", params_, look.params},
    };
    for (const auto& [option, text, field] : vectors) {
        if (auto error = parseVector(option, text, field)) {
            return Failure{std::move(*error)};
        }
    }
    for (const std::string& text : custom_) {
        if (auto error = parseCustom(text, look)) {
            return Failure{std::move(*error)};
        }
    }
    return look;
}

} // namespace vantor
