#include "agent/output/window/key_table.h"

namespace vantor::agent {
namespace {

constexpr KeyName kNone{};

constexpr KeyEntry kTable[] = {
    {{{{SDLK_l, "L"}, kNone}}, "Lock and unlock", WindowCommand::toggleLock},
    {{{{SDLK_i, "I"}, kNone}}, "Go idle and come back", WindowCommand::toggleIdle},
    {{{{SDLK_s, "S"}, kNone}}, "Suspend and resume", WindowCommand::toggleSuspend},
    {{{{SDLK_n, "N"}, kNone}}, "Next wallpaper", WindowCommand::nextWallpaper},
    {{{{SDLK_f, "F"}, kNone}}, "Full screen", WindowAction::toggleFullScreen},
    {{{{SDLK_h, "H"}, {SDLK_F1, "F1"}}}, "Show and hide this help", WindowAction::toggleHelp},
    {{{{SDLK_q, "Q"}, {SDLK_ESCAPE, "Esc"}}}, "Quit", WindowCommand::quit},
};

} // namespace

std::span<const KeyEntry> keyTable() { return kTable; }

std::optional<KeyAction> actionOf(SDL_Keycode code) {
    if (code == SDLK_UNKNOWN) {
        return std::nullopt;
    }
    for (const KeyEntry& entry : kTable) {
        for (const KeyName& key : entry.keys) {
            if (key.code == code) {
                return entry.action;
            }
        }
    }
    return std::nullopt;
}

} // namespace vantor::agent
