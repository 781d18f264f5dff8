#pragma once
// Who a peer is, on Linux: the file that a process runs, and who could have changed it.

#include "platform/code_identity.h"

#include <filesystem>
#include <sys/types.h>

namespace vantor {

/// Understands one requirement, "anchor apple" (the system's own code). It holds for a program that
/// belongs to root, or to the running installation by its owner and its prefix, and that neither
/// its group nor others can write. Whoever owns the installation chose the code that checks this.
class LinuxCodeIdentity : public CodeIdentity {
  public:
    /// `installation` is the folder below which the running installation's programs stand, `owner`
    /// whom they belong to.
    LinuxCodeIdentity(std::filesystem::path installation, uid_t owner);

    /// Examines the process that started this one and remembers what was found: a confined process
    /// may examine no process outside. While there is one thread.
    static void rememberLauncher();

    std::unique_ptr<GuestCode> copyGuest(int processIdentifier) override;
    std::unique_ptr<CodeRequirement> requirement(std::string_view text) override;
    bool checkValidity(const GuestCode& code, const CodeRequirement& requirement) override;

  private:
    std::filesystem::path installation_;
    uid_t owner_;
};

} // namespace vantor
