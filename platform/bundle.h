#pragma once
// The extension's bundle and the home directories.
//   Linux: the bundle folder's Info.plist and Resources; $HOME as the extension's home, the user
//   database for the real one (the environment variable VANTOR_USER_HOME stands in for it).
//   macOS: NSBundle, NSHomeDirectory, getpwuid.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace vantor {

/// Any thread.
class Bundle {
  public:
    virtual ~Bundle() = default;

    /// The bundle identifier; nothing when the program runs outside a bundle.
    virtual std::optional<std::string> identifier() const = 0;
    /// The file "Resources/<subdirectory>/<name>.<extension>" when it exists.
    virtual std::optional<std::filesystem::path> resource(std::string_view name,
                                                          std::string_view extension,
                                                          std::string_view subdirectory) const = 0;

    /// The process's own (for an extension: sandboxed) home.
    virtual std::filesystem::path homeDirectory() const = 0;
    /// The current user's home as the user database gives it; nothing without an entry.
    virtual std::optional<std::filesystem::path> userDatabaseHome() const = 0;
};

} // namespace vantor
