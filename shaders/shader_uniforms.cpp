#include "shaders/shader_uniforms.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>
#include <string_view>
#include <vector>

namespace vantor {

namespace {

/// A field of the look that is a vector of four.
struct VectorField {
    std::string_view key;
    Float4 ShaderUniforms::*field;
};

constexpr std::array kVectorFields = {
    VectorField{"tint", &ShaderUniforms::tint},
    VectorField{"color1", &ShaderUniforms::color1},
    VectorField{"color2", &ShaderUniforms::color2},
    VectorField{"color3", &ShaderUniforms::color3},
    VectorField{"background", &ShaderUniforms::background},
    VectorField{"params", &ShaderUniforms::params},
};

constexpr std::array kComponents = {&Float4::x, &Float4::y, &Float4::z, &Float4::w};

/// Rounds to float. C++ leaves the conversion of a double beyond the float range undefined; the
/// look's contract is IEEE 754's, which rounds it to an infinity.
float narrowed(double value) {
    // Halfway between the largest float and the power of two above it, where rounding gives up.
    constexpr double kOverflow = 0x1.ffffffp127;
    if (value >= kOverflow) {
        return std::numeric_limits<float>::infinity();
    }
    if (value <= -kOverflow) {
        return -std::numeric_limits<float>::infinity();
    }
    // Below the midpoint, round to nearest gives the largest float; the clamp says so without
    // leaving the range in which the conversion is defined.
    constexpr double kLargest = std::numeric_limits<float>::max();
    return static_cast<float>(std::clamp(value, -kLargest, kLargest));
}

/// The numbers of an array, or nothing when the key is missing or its value is anything else.
std::optional<std::vector<double>> numbers(const PropertyListDictionary& look,
                                           std::string_view key) {
    const PropertyList* value = look.find(key);
    const PropertyList::Array* array = value == nullptr ? nullptr : value->array();
    if (array == nullptr) {
        return std::nullopt;
    }
    std::vector<double> result(array->size());
    for (std::size_t i = 0; i < result.size(); ++i) {
        if (!(*array)[i].numberAsDouble(result[i])) {
            return std::nullopt;
        }
    }
    return result;
}

bool allFinite(const std::vector<double>& values) {
    return std::all_of(values.begin(), values.end(), [](double v) { return std::isfinite(v); });
}

} // namespace

ShaderUniforms::ShaderUniforms(Float2 frameResolution, float frameTime)
    : resolution(frameResolution), time(frameTime) {}

ShaderUniforms ShaderUniforms::fromLookPlist(const PropertyListDictionary& look) {
    ShaderUniforms block;
    const auto speeds = numbers(look, "speed");
    if (speeds && !speeds->empty() && std::isfinite(speeds->front())) {
        block.speed = narrowed(speeds->front());
    }
    for (const VectorField& vector : kVectorFields) {
        const auto values = numbers(look, vector.key);
        if (!values || values->size() != kComponents.size() || !allFinite(*values)) {
            continue;
        }
        for (std::size_t i = 0; i < kComponents.size(); ++i) {
            block.*vector.field.*kComponents[i] = narrowed((*values)[i]);
        }
    }
    const auto slots = numbers(look, "custom");
    if (slots && slots->size() == customSlotCount && allFinite(*slots)) {
        for (int i = 0; i < customSlotCount; ++i) {
            block.setCustom(i, narrowed((*slots)[static_cast<std::size_t>(i)]));
        }
    }
    return block;
}

PropertyListDictionary ShaderUniforms::lookPlist() const {
    PropertyListDictionary look;
    look.append("speed", PropertyList::Array{static_cast<double>(speed)});
    for (const VectorField& vector : kVectorFields) {
        PropertyList::Array values;
        for (float Float4::*component : kComponents) {
            values.emplace_back(static_cast<double>(this->*vector.field.*component));
        }
        look.append(std::string(vector.key), std::move(values));
    }
    PropertyList::Array slots;
    for (int i = 0; i < customSlotCount; ++i) {
        slots.emplace_back(static_cast<double>(custom(i)));
    }
    look.append("custom", std::move(slots));
    return look;
}

float ShaderUniforms::custom(int slot) const {
    if (slot < 0 || slot >= customSlotCount) {
        return 0.0F;
    }
    return this->*customPath(slot / 4).*kComponents[static_cast<std::size_t>(slot % 4)];
}

void ShaderUniforms::setCustom(int slot, float value) {
    if (slot < 0 || slot >= customSlotCount || !std::isfinite(value)) {
        return;
    }
    this->*customPath(slot / 4).*kComponents[static_cast<std::size_t>(slot % 4)] = value;
}

Float4 ShaderUniforms::*ShaderUniforms::customPath(int vector) {
    switch (vector) {
    case 0:
        return &ShaderUniforms::custom0;
    case 1:
        return &ShaderUniforms::custom1;
    case 2:
        return &ShaderUniforms::custom2;
    case 3:
        return &ShaderUniforms::custom3;
    case 4:
        return &ShaderUniforms::custom4;
    case 5:
        return &ShaderUniforms::custom5;
    case 6:
        return &ShaderUniforms::custom6;
    default:
        return &ShaderUniforms::custom7;
    }
}

} // namespace vantor
