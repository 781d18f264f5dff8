#include "platform/linux/whole_file.h"

#include "platform/linux/file_descriptor.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

namespace vantor {
namespace {

constexpr std::chrono::milliseconds kLockRetry{10};

Failure<std::string> failure(const std::filesystem::path& file, int error) {
    return Failure{file.string() + ": " + std::strerror(error)};
}

/// A temporary file beside its target, gone again unless it took the target's place.
class TemporaryFile {
  public:
    explicit TemporaryFile(const std::filesystem::path& target)
        : name_(target.string() + ".XXXXXX"), descriptor_(::mkstemp(name_.data())) {}
    ~TemporaryFile() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
            if (!renamed_) {
                ::unlink(name_.c_str());
            }
        }
    }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    // Each is false with errno set.

    bool write(std::span<const std::uint8_t> bytes) {
        if (descriptor_ < 0) {
            return false;
        }
        while (!bytes.empty()) {
            const ssize_t count = ::write(descriptor_, bytes.data(), bytes.size());
            if (count < 0 && errno != EINTR) {
                return false;
            }
            bytes = bytes.subspan(count < 0 ? 0 : static_cast<std::size_t>(count));
        }
        return true;
    }

    bool takePermissionsOf(const std::filesystem::path& target, Readers readers) {
        struct stat old {};
        const bool exists = ::stat(target.c_str(), &old) == 0;
        const mode_t fresh = readers == Readers::everybody ? 0644 : 0600;
        return ::fchmod(descriptor_, exists ? old.st_mode & ALLPERMS : fresh) == 0;
    }

    bool replace(const std::filesystem::path& target) {
        renamed_ = ::fsync(descriptor_) == 0 && std::rename(name_.c_str(), target.c_str()) == 0;
        return renamed_;
    }

  private:
    std::string name_;
    int descriptor_;
    bool renamed_ = false;
};

std::filesystem::path folderOf(const std::filesystem::path& file) {
    return file.has_parent_path() ? file.parent_path() : ".";
}

/// Makes a rename last. Where a file system cannot do it, the file is whole all the same.
void syncFolder(const std::filesystem::path& folder) {
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor >= 0) {
        ::fsync(descriptor);
        ::close(descriptor);
    }
}

} // namespace

Result<FolderLock, std::string> FolderLock::take(const std::filesystem::path& folder,
                                                 std::chrono::milliseconds patience) {
    FolderLock lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (lock.descriptor_ < 0) {
        return failure(folder, errno);
    }
    const auto deadline = std::chrono::steady_clock::now() + patience;
    while (::flock(lock.descriptor_, LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return failure(folder, errno);
        }
        if (std::chrono::steady_clock::now() >= deadline) {
            return Failure{folder.string() + ": another program has held the lock for " +
                           std::to_string(patience.count()) + " ms"};
        }
        std::this_thread::sleep_for(kLockRetry);
    }
    return lock;
}

FolderLock::FolderLock(FolderLock&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FolderLock::~FolderLock() {
    if (descriptor_ >= 0) {
        ::close(descriptor_);
    }
}

Result<std::optional<std::string>, std::string> readFile(const std::filesystem::path& file,
                                                         std::size_t limit) {
    // A pipe is opened at once, too, and then refused.
    const FileDescriptor opened(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (!opened && (errno == ENOENT || errno == ENOTDIR)) {
        return std::optional<std::string>();
    }
    struct stat what {};
    if (!opened || ::fstat(opened.get(), &what) != 0) {
        return failure(file, errno);
    }
    if (!S_ISREG(what.st_mode)) {
        return Failure{file.string() + ": this is no regular file"};
    }
    std::string text(std::min(static_cast<std::size_t>(what.st_size), limit) + 1, '\0');
    std::size_t size = 0;
    while (true) {
        const ssize_t count = ::read(opened.get(), text.data() + size, text.size() - size);
        if (count < 0 && errno != EINTR) {
            return failure(file, errno);
        }
        size += count < 0 ? 0 : static_cast<std::size_t>(count);
        if (size > limit) {
            return Failure{file.string() + ": a file of more than " + std::to_string(limit) +
                           " bytes exceeds the limit"};
        }
        if (count == 0) {
            text.resize(size);
            return std::optional(std::move(text));
        }
        if (size == text.size()) {
            // It grew while it was read.
            text.resize(limit + 1);
        }
    }
}

Result<Done, std::string> makePrivateFolder(const std::filesystem::path& folder) {
    std::error_code status;
    if (std::filesystem::is_directory(folder, status)) {
        return Done{};
    }
    if (folder.has_parent_path() && folder.parent_path() != folder) {
        if (auto above = makePrivateFolder(folder.parent_path()); !above) {
            return above;
        }
    }
    if (::mkdir(folder.c_str(), 0700) == 0) {
        return Done{};
    }
    const int error = errno;
    if (error != EEXIST) {
        return failure(folder, error);
    }
    // Somebody else may just have made it.
    return std::filesystem::is_directory(folder, status) ? Result<Done, std::string>(Done{})
                                                         : failure(folder, ENOTDIR);
}

Result<Done, std::string> canReplaceFile(const std::filesystem::path& file) {
    std::error_code ignored;
    if (std::filesystem::is_directory(file, ignored)) {
        return failure(file, EISDIR);
    }
    if (::access(folderOf(file).c_str(), W_OK | X_OK) != 0) {
        return failure(file, errno);
    }
    return Done{};
}

Result<Done, std::string> replaceFile(const std::filesystem::path& file,
                                      std::span<const std::uint8_t> bytes, Readers readers) {
    std::error_code status;
    std::filesystem::path target = file;
    if (std::filesystem::is_symlink(file, status)) {
        target = std::filesystem::canonical(file, status);
        if (status) {
            return failure(file, status.value());
        }
    }
    TemporaryFile temporary(target);
    if (!temporary.write(bytes) || !temporary.takePermissionsOf(target, readers) ||
        !temporary.replace(target)) {
        return failure(file, errno);
    }
    syncFolder(folderOf(target));
    return Done{};
}

} // namespace vantor
