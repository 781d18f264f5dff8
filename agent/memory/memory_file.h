#pragma once
// Where the agent's memory stands between two logins: a JSON file. Main thread.

#include "agent/memory/agent_memory.h"
#include "platform/result.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vantor::agent {

/// vantor/agent.json in the user's state folder; nothing where there is no such folder.
std::optional<std::filesystem::path> memoryFile();

struct LoadedMemory {
    AgentMemory memory;
    /// Why it is empty though there was a file, and where that file is now; a sentence.
    std::optional<std::string> trouble;
};

/// A file that is not there is an empty memory. One that cannot be understood is renamed, so that
/// nothing is lost and the next save has its place. Keys that are not known are left out.
LoadedMemory loadMemory(const std::filesystem::path& file);

/// Replaces the file in one step, and makes its folder where it is missing. The error is a
/// sentence; the old file then stands.
Result<Done, std::string> saveMemory(const std::filesystem::path& file, const AgentMemory& memory);

/// The number that the display was given, now or before: the lowest that no other one has.
std::uint32_t displayNumber(AgentMemory& memory, std::string_view connector);

} // namespace vantor::agent
