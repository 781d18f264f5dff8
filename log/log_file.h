#pragma once
// A text file of lines that keeps one older generation. Not thread-safe. Nothing here reports a
// failure: a log that cannot be written is not worth stopping for.

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace vantor {

class LogFile {
  public:
    /// A file larger than this is rotated before the next line.
    static constexpr std::uintmax_t kMaxBytes = 524288;

    /// Creates the file's directory, not the file.
    explicit LogFile(std::filesystem::path path);

    /// Appends bytes as they stand. A file that cannot be opened is started anew.
    void append(std::string_view line) const;

    const std::filesystem::path& path() const { return path_; }
    /// The older generation: the path with the extension "1" added.
    const std::filesystem::path& rotatedPath() const { return rotatedPath_; }

  private:
    void rotateIfLarge() const;

    std::filesystem::path path_;
    std::filesystem::path rotatedPath_;
};

} // namespace vantor
