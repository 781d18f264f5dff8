#pragma once
// Reads agent.toml. Any thread.

#include "agent/configuration/configuration.h"
#include "platform/result.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vantor::agent {

/// vantor/agent.toml in the user's folder of settings; nothing where there is no such folder.
std::optional<std::filesystem::path> configurationFile();

/// The error is the first mistake in the text, with its place and a sentence:
/// "agent.toml:3:11: max_fps is -1, but must be above 0".
Result<Configuration, std::string> parseConfiguration(std::string_view text,
                                                      std::string_view fileName);

/// A file that is not there is the configuration of somebody who wants nothing special. The error
/// names the file; for a mistake in it as above.
Result<Configuration, std::string> loadConfiguration(const std::filesystem::path& file);

} // namespace vantor::agent
