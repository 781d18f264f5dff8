#include "platform/linux/system/linux_code_identity.h"

#include <algorithm>
#include <optional>
#include <string>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vantor {
namespace {

class ProgramFile : public GuestCode {
  public:
    ProgramFile(std::filesystem::path path, const struct stat& status)
        : path_(std::move(path)), status_(status) {}
    const std::filesystem::path& path() const { return path_; }
    const struct stat& status() const { return status_; }

  private:
    std::filesystem::path path_;
    struct stat status_;
};

class SystemRequirement : public CodeRequirement {};

bool isBelow(const std::filesystem::path& path, const std::filesystem::path& folder) {
    const auto [end, rest] = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end());
    return end == folder.end() && rest != path.end();
}

/// The program that a process runs now; nothing when the process is gone or not ours to examine.
std::optional<ProgramFile> programOf(pid_t process) {
    const std::string link = "/proc/" + std::to_string(process) + "/exe";
    std::error_code failed;
    auto path = std::filesystem::read_symlink(link, failed);
    struct stat status {};
    // Through the link, so that what is examined is what runs, whatever stands at the path now.
    if (failed || stat(link.c_str(), &status) != 0) {
        return std::nullopt;
    }
    return ProgramFile(std::move(path), status);
}

struct Launcher {
    pid_t process = 0;
    std::optional<ProgramFile> program;
};
/// Written before there is a second thread.
Launcher launcher;

} // namespace

void LinuxCodeIdentity::rememberLauncher() {
    launcher.process = getppid();
    launcher.program = programOf(launcher.process);
}

LinuxCodeIdentity::LinuxCodeIdentity(std::filesystem::path installation, uid_t owner)
    : installation_(std::move(installation)), owner_(owner) {}

std::unique_ptr<GuestCode> LinuxCodeIdentity::copyGuest(int processIdentifier) {
    // A number is the launcher's for as long as it is this process's parent.
    const bool launched = processIdentifier == launcher.process && getppid() == launcher.process;
    auto program = launched && launcher.program ? launcher.program : programOf(processIdentifier);
    return program ? std::make_unique<ProgramFile>(std::move(*program)) : nullptr;
}

std::unique_ptr<CodeRequirement> LinuxCodeIdentity::requirement(std::string_view text) {
    return text == "anchor apple" ? std::make_unique<SystemRequirement>() : nullptr;
}

bool LinuxCodeIdentity::checkValidity(const GuestCode& code, const CodeRequirement&) {
    // Only copyGuest makes codes.
    const auto& program = static_cast<const ProgramFile&>(code);
    if ((program.status().st_mode & (S_IWGRP | S_IWOTH)) != 0) {
        return false;
    }
    if (program.status().st_uid == 0) {
        return true;
    }
    return program.status().st_uid == owner_ && isBelow(program.path(), installation_);
}

} // namespace vantor
