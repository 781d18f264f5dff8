#pragma once
// The keys of a window: what each does, and the words for it on the help panel.

#include "agent/output/output.h"

#include <SDL_keycode.h>
#include <array>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

namespace vantor::agent {

/// What a window does by itself.
enum class WindowAction { toggleHelp, toggleFullScreen };
using KeyAction = std::variant<WindowCommand, WindowAction>;

struct KeyName {
    SDL_Keycode code = SDLK_UNKNOWN;
    /// As it stands on the key; empty for none.
    std::string_view cap;
};

struct KeyEntry {
    std::array<KeyName, 2> keys;
    std::string_view meaning;
    KeyAction action;
};

/// In the order in which the help lists them.
std::span<const KeyEntry> keyTable();

/// Nothing when the key has no meaning.
std::optional<KeyAction> actionOf(SDL_Keycode code);

} // namespace vantor::agent
