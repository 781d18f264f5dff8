#pragma once
// Who a peer is, on Linux: the file that a process runs, and who could have changed it.

#include "platform/code_identity.h"

#include <filesystem>

namespace vantor {

/// Understands one requirement, "anchor apple" (the system's own code). It holds for a program that
/// belongs to root, or to the user and the prefix of the running installation, and that neither its
/// group nor others can write.
class LinuxCodeIdentity : public CodeIdentity {
  public:
    /// `installation` is the folder below which the running installation's programs stand.
    explicit LinuxCodeIdentity(std::filesystem::path installation);

    /// Examines the process that started this one and remembers what was found: a confined process
    /// may examine no process outside. While there is one thread.
    static void rememberLauncher();

    std::unique_ptr<GuestCode> copyGuest(int processIdentifier) override;
    std::unique_ptr<CodeRequirement> requirement(std::string_view text) override;
    bool checkValidity(const GuestCode& code, const CodeRequirement& requirement) override;

  private:
    std::filesystem::path installation_;
};

} // namespace vantor
