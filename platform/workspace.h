#pragma once
// Installed applications.
//   Linux: desktop entries through GIO.
//   macOS: NSWorkspace.

#include <filesystem>
#include <optional>
#include <string_view>

namespace vantor {

/// Any thread.
class Workspace {
  public:
    virtual ~Workspace() = default;

    /// Where the application of that bundle identifier is installed, or nothing.
    virtual std::optional<std::filesystem::path>
    applicationLocation(std::string_view bundleIdentifier) = 0;
    /// Opens it with a default configuration; the outcome is not awaited.
    virtual void openApplication(const std::filesystem::path& location) = 0;
};

} // namespace vantor
