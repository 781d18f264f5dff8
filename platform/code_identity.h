#pragma once
// Who a peer is: the code that a process runs, held against a requirement. Each step can fail, and
// the caller decides what a failure means.
//   Linux: /proc and file ownership; "anchor apple" (the system's own code) holds for a program
//   that belongs to root or to the running installation and that others cannot write.
//   macOS: SecCodeCopyGuestWithAttributes, SecRequirementCreateWithString, SecCodeCheckValidity.

#include <memory>
#include <string_view>

namespace vantor {

/// The code that a process runs.
class GuestCode {
  public:
    virtual ~GuestCode() = default;
};

class CodeRequirement {
  public:
    virtual ~CodeRequirement() = default;
};

/// Any thread.
class CodeIdentity {
  public:
    virtual ~CodeIdentity() = default;

    /// Null when the process is gone or may not be examined.
    virtual std::unique_ptr<GuestCode> copyGuest(int processIdentifier) = 0;
    /// Null when the text is not understood.
    virtual std::unique_ptr<CodeRequirement> requirement(std::string_view text) = 0;
    virtual bool checkValidity(const GuestCode& code, const CodeRequirement& requirement) = 0;
};

} // namespace vantor
