#include "library/desktop_state.h"

#include <algorithm>
#include <charconv>

namespace vantor {
namespace {

const PropertyListDictionary& dictionary(const PropertyListDictionary& parent,
                                         std::string_view key) {
    static const PropertyListDictionary kEmpty;
    const PropertyList* value = parent.find(key);
    const PropertyListDictionary* found = value != nullptr ? value->dictionary() : nullptr;
    return found != nullptr ? *found : kEmpty;
}

const std::string* string(const PropertyListDictionary& parent, std::string_view key) {
    const PropertyList* value = parent.find(key);
    return value != nullptr ? value->string() : nullptr;
}

/// An array that holds something else than strings counts as absent as a whole.
std::set<std::string, std::less<>> strings(const PropertyListDictionary& parent,
                                           std::string_view key) {
    const PropertyList* value = parent.find(key);
    const PropertyList::Array* array = value != nullptr ? value->array() : nullptr;
    std::set<std::string, std::less<>> found;
    if (array != nullptr) {
        for (const PropertyList& element : *array) {
            if (element.string() == nullptr) {
                return {};
            }
            found.insert(*element.string());
        }
    }
    return found;
}

std::optional<Resolved> resolvedDisplay(const PropertyListDictionary& display) {
    const std::string* id = string(display, "id");
    const std::string* source = string(display, "source");
    if (id == nullptr || source == nullptr || source->empty()) {
        return std::nullopt;
    }
    return Resolved{.key = *id + "#" + DesktopState::stableHash(*source),
                    .source = *source,
                    .still = std::nullopt,
                    .uniforms = ShaderUniforms::fromLookPlist(dictionary(display, "look"))};
}

std::string displayKey(std::uint32_t display) { return std::to_string(display); }

} // namespace

DesktopState::DesktopState(const std::optional<PropertyListDictionary>& appState) {
    if (!appState) {
        return;
    }
    const PropertyListDictionary& desktop = dictionary(*appState, "desktop");
    if (const std::string* main = string(desktop, "main")) {
        main_ = *main;
    }
    nonShader_ = strings(desktop, "nonShader");
    for (const auto& [key, value] : dictionary(desktop, "displays")) {
        if (value.dictionary() == nullptr) {
            continue;
        }
        if (auto resolved = resolvedDisplay(*value.dictionary())) {
            displays_.try_emplace(key, *std::move(resolved));
        }
    }
}

bool DesktopState::isNonShader(std::optional<std::uint32_t> display) const {
    if (display) {
        return nonShader_.contains(displayKey(*display));
    }
    return !nonShader_.empty() && std::all_of(displays_.begin(), displays_.end(), [&](auto& entry) {
        return nonShader_.contains(entry.first);
    });
}

const Resolved* DesktopState::shader(std::optional<std::uint32_t> display) const {
    if (display) {
        if (const auto found = displays_.find(displayKey(*display)); found != displays_.end()) {
            return &found->second;
        }
    }
    if (main_) {
        if (const auto found = displays_.find(*main_); found != displays_.end()) {
            return &found->second;
        }
    }
    return displays_.empty() ? nullptr : &displays_.begin()->second;
}

std::string DesktopState::stableHash(std::string_view text) {
    std::uint64_t hash = 0xcbf29ce484222325;
    for (const char byte : text) {
        hash = (hash ^ static_cast<std::uint8_t>(byte)) * 0x100000001b3;
    }
    char digits[16];
    const auto [end, failure] = std::to_chars(std::begin(digits), std::end(digits), hash, 16);
    return {digits, end};
}

} // namespace vantor
