#pragma once
// Files that are only ever seen whole: replaced in one step, and changed by one program at a time.

#include "platform/result.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>

namespace vantor {

/// Keeps other programs that ask for the same lock out of a folder's files while it lives. The lock
/// is on the folder itself: it leaves no file behind, and ends with the process that holds it.
class FolderLock {
  public:
    /// Waits for whoever holds the lock, at most `patience`. The error is a sentence.
    static Result<FolderLock, std::string>
    take(const std::filesystem::path& folder,
         std::chrono::milliseconds patience = std::chrono::seconds(10));

    FolderLock(FolderLock&& other) noexcept;
    FolderLock& operator=(FolderLock&&) = delete;
    ~FolderLock();

  private:
    explicit FolderLock(int descriptor) : descriptor_(descriptor) {}

    int descriptor_;
};

/// Whether a file could be put in place of `file`, for those who have long work to do before. The
/// error is a sentence that names the file.
Result<Done, std::string> canReplaceFile(const std::filesystem::path& file);

/// What a file holds, at most `limit` bytes; nothing when there is no such file. Only a regular
/// file is read, since reading another may wait for ever. The error is a sentence that names the
/// file.
Result<std::optional<std::string>, std::string> readFile(const std::filesystem::path& file,
                                                         std::size_t limit);

/// Makes a folder, with those above it that are missing, for its owner alone; one that is there
/// stays as it is. The error is a sentence that names the folder.
Result<Done, std::string> makePrivateFolder(const std::filesystem::path& folder);

/// Who may read a file that was not there before.
enum class Readers { everybody, owner };

/// Gives `file` the content `bytes` in one step: a reader sees the old content or the new one, and
/// so does whoever looks after a power failure. The folder must exist; an old file's permissions
/// stay, and a symbolic link stays one. The error is a sentence that names the file; the old file
/// then stands.
Result<Done, std::string> replaceFile(const std::filesystem::path& file,
                                      std::span<const std::uint8_t> bytes,
                                      Readers readers = Readers::everybody);

} // namespace vantor
