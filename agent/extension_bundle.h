#pragma once
// Which extension a command starts.

#include <CLI/CLI.hpp>

#include <filesystem>
#include <string>

namespace vantor::agent {

/// Adds `--extension DIR`, the bundle folder.
void addExtensionOption(CLI::App& command, std::string& folder);

/// That folder, or the installed extension's when it is empty.
std::filesystem::path bundleFolder(const std::string& folder);

} // namespace vantor::agent
