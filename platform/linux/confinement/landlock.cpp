#include "platform/linux/confinement/landlock.h"

#include "platform/linux/file_descriptor.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantor::confinement {
namespace {

// The kernel's interface has grown; what the installed headers may lack stands here by number
// (Linux, Documentation/userspace-api/landlock.rst).
constexpr std::uint64_t kRefer = 1ULL << 13U;
constexpr std::uint64_t kTruncate = 1ULL << 14U;
constexpr std::uint64_t kControlDevice = 1ULL << 15U;
constexpr std::uint64_t kBindTCP = 1ULL << 0U;
constexpr std::uint64_t kConnectTCP = 1ULL << 1U;
constexpr std::uint64_t kScopeSignal = 1ULL << 1U;

struct RulesetAttributes {
    std::uint64_t files;
    std::uint64_t network;
    std::uint64_t scoped;
};

constexpr std::uint64_t kReadFile = LANDLOCK_ACCESS_FS_READ_FILE;
constexpr std::uint64_t kRead = kReadFile | LANDLOCK_ACCESS_FS_READ_DIR;
constexpr std::uint64_t kWriteFile = LANDLOCK_ACCESS_FS_WRITE_FILE | kTruncate;
constexpr std::uint64_t kWrite =
    kWriteFile | LANDLOCK_ACCESS_FS_REMOVE_DIR | LANDLOCK_ACCESS_FS_REMOVE_FILE |
    LANDLOCK_ACCESS_FS_MAKE_DIR | LANDLOCK_ACCESS_FS_MAKE_REG | LANDLOCK_ACCESS_FS_MAKE_SOCK |
    LANDLOCK_ACCESS_FS_MAKE_FIFO | LANDLOCK_ACCESS_FS_MAKE_SYM | kRefer;
constexpr std::uint64_t kNeverGranted =
    LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_MAKE_CHAR | LANDLOCK_ACCESS_FS_MAKE_BLOCK;
constexpr std::uint64_t kDevice = kRead | kWriteFile | kControlDevice;
/// The rights that a rule for a single file may name.
constexpr std::uint64_t kOfFiles = kReadFile | kWriteFile | kControlDevice;

std::uint64_t granted(Access access) {
    switch (access) {
    case Access::read:
        return kRead;
    case Access::readAndWrite:
        return kRead | kWrite;
    case Access::device:
        return kDevice;
    }
    return 0;
}

/// What the running kernel can govern.
RulesetAttributes governed(long version) {
    RulesetAttributes attributes{.files = kNeverGranted | kRead | LANDLOCK_ACCESS_FS_WRITE_FILE |
                                          (kWrite & ~kRefer & ~kTruncate),
                                 .network = 0,
                                 .scoped = 0};
    if (version >= 2) {
        attributes.files |= kRefer;
    }
    if (version >= 3) {
        attributes.files |= kTruncate;
    }
    if (version >= 4) {
        attributes.network = kBindTCP | kConnectTCP;
    }
    if (version >= 5) {
        attributes.files |= kControlDevice;
    }
    if (version >= 6) {
        attributes.scoped = kScopeSignal;
    }
    return attributes;
}

/// A kernel refuses attributes that it does not know, so it is told no more of them than it does.
std::size_t attributesSize(long version) {
    return version >= 6   ? sizeof(RulesetAttributes)
           : version >= 4 ? offsetof(RulesetAttributes, scoped)
                          : offsetof(RulesetAttributes, network);
}

bool addRule(int ruleset, const Rule& rule, std::uint64_t possible) {
    const FileDescriptor place(open(rule.path.c_str(), O_PATH | O_CLOEXEC));
    struct stat status {};
    if (!place || fstat(place.get(), &status) != 0) {
        // Not there: nothing to grant.
        return true;
    }
    std::uint64_t rights = granted(rule.access) & possible;
    if (!S_ISDIR(status.st_mode)) {
        rights &= kOfFiles;
    }
    const landlock_path_beneath_attr beneath{.allowed_access = rights, .parent_fd = place.get()};
    return syscall(SYS_landlock_add_rule, ruleset, LANDLOCK_RULE_PATH_BENEATH, &beneath, 0) == 0;
}

Failure<std::string> failed(const char* what) {
    return Failure{std::string(what) + ": " + std::strerror(errno)};
}

} // namespace

Result<Done, std::string> confine(const std::vector<Rule>& rules) {
    const long version =
        syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    if (version < 1) {
        return failed("the kernel offers no Landlock");
    }
    const RulesetAttributes attributes = governed(version);
    const FileDescriptor ruleset(static_cast<int>(
        syscall(SYS_landlock_create_ruleset, &attributes, attributesSize(version), 0)));
    if (!ruleset) {
        return failed("no Landlock ruleset can be made");
    }
    for (const Rule& rule : rules) {
        if (!addRule(ruleset.get(), rule, attributes.files)) {
            return failed(("no Landlock rule can be made for " + rule.path.string()).c_str());
        }
    }
    // Without new privileges, for a program that gains some could undo all this.
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0) {
        return failed("new privileges cannot be given up");
    }
    if (syscall(SYS_landlock_restrict_self, ruleset.get(), 0) != 0) {
        return failed("the process cannot be confined");
    }
    return Done{};
}

} // namespace vantor::confinement
