#pragma once
// The host application's state file.

#include "platform/property_list.h"

#include <filesystem>
#include <optional>

namespace vantor {

class Platform;

/// The user's home as the user database gives it, not the extension's own; that one only where the
/// database has no entry.
std::filesystem::path realHome(Platform& platform);

/// Where the host application keeps its state.
std::filesystem::path appStateURL(Platform& platform);

/// The file's top-level dictionary. Nothing when it cannot be read, which is logged with the
/// system's error number, or when it is not a property list with a dictionary at its root.
std::optional<PropertyListDictionary> readAppState(Platform& platform,
                                                   const std::filesystem::path& file);

} // namespace vantor
