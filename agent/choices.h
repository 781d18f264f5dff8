#pragma once
// Which entry each output shows: what was asked for, what is remembered, what the configuration
// says, and what must not be shown for now. Main thread.

#include "agent/configuration/configuration.h"
#include "agent/memory/agent_memory.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vantor::agent {

/// The host application's choice for the display.
inline constexpr std::string_view kDefaultChoice = "match-desktop";
/// What is shown instead of a choice that was set aside.
inline constexpr std::string_view kSafeChoice = "builtin.elec-pcb";
/// As an entry to choose: what the configuration says.
inline constexpr std::string_view kNoChoice = "default";

class Choices {
  public:
    struct Shown {
        /// What was chosen, and what is shown: another one only with `setAside`, which says why.
        std::string choice;
        std::string entry;
        std::optional<std::string> setAside = std::nullopt;
    };

    /// `asked` is by display number and counts most. `fingerprint` tells whether a choice still
    /// means the same wallpaper. The memory outlives this; whoever changes it saves it.
    Choices(std::map<std::uint32_t, std::string> asked, AgentMemory& memory,
            std::function<std::string(std::string_view choice)> fingerprint);

    Shown shown(std::uint32_t number, std::string_view connector,
                const OutputSettings& settings) const;

    /// Remembers a choice; kNoChoice forgets the one before.
    void choose(std::uint32_t number, std::string_view connector, std::string_view entry);
    /// As long as this runs, and not remembered.
    void chooseForNow(std::uint32_t number, std::string_view entry) { asked_[number] = entry; }
    /// The output shows kSafeChoice until its choice is another one, or means another wallpaper.
    /// False when that is what it shows already.
    bool setAside(std::string_view connector, std::string_view choice, std::string reason);
    /// Forgets what was set aside and has changed since. True when there was any.
    bool forgetChanged();

  private:
    const SetAsideChoice* find(std::string_view connector, std::string_view choice) const;

    std::map<std::uint32_t, std::string> asked_;
    AgentMemory& memory_;
    std::function<std::string(std::string_view)> fingerprint_;
};

} // namespace vantor::agent
