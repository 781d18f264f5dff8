#pragma once
// What the agent remembers from one login to the next. Main thread.

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vantor::agent {

/// A choice that brought the extension down again and again, and is not shown until it changes.
struct SetAsideChoice {
    std::string connector;
    std::string choice;
    /// What "changes" means: equal as long as the choice means the same wallpaper.
    std::string fingerprint;
    /// A sentence.
    std::string reason;

    bool operator==(const SetAsideChoice&) const = default;
};

struct AgentMemory {
    /// What `choose` said, by connector.
    std::map<std::string, std::string> choices = {};
    /// The number that each display was given when it was first seen, by connector.
    std::map<std::string, std::uint32_t> displayNumbers = {};
    std::vector<SetAsideChoice> setAside = {};

    bool operator==(const AgentMemory&) const = default;
};

} // namespace vantor::agent
