#include "platform/darwin/darwin_system.h"

#include "platform/darwin/foundation.h"

#import <Security/Security.h>

namespace vantor::darwin {
namespace {

/// Owns what one of Security's functions has copied or created.
template <typename Base, typename Ref>
class Owned final : public Base {
  public:
    explicit Owned(Ref ref) : ref_(ref) {}
    ~Owned() override { CFRelease(ref_); }
    Owned(const Owned&) = delete;
    Owned& operator=(const Owned&) = delete;
    Ref get() const { return ref_; }

  private:
    Ref ref_;
};
using Guest = Owned<GuestCode, SecCodeRef>;
using Requirement = Owned<CodeRequirement, SecRequirementRef>;

} // namespace

std::unique_ptr<GuestCode> DarwinCodeIdentity::copyGuest(int processIdentifier) {
    NSDictionary* attributes = @{
        (__bridge NSString*)kSecGuestAttributePid : [NSNumber numberWithInt:processIdentifier],
    };
    SecCodeRef code = nullptr;
    const OSStatus status = SecCodeCopyGuestWithAttributes(
        nullptr, (__bridge CFDictionaryRef)attributes, kSecCSDefaultFlags, &code);
    return status == errSecSuccess && code != nullptr ? std::make_unique<Guest>(code) : nullptr;
}

std::unique_ptr<CodeRequirement> DarwinCodeIdentity::requirement(std::string_view text) {
    SecRequirementRef requirement = nullptr;
    const OSStatus status = SecRequirementCreateWithString((__bridge CFStringRef)nsString(text),
                                                           kSecCSDefaultFlags, &requirement);
    return status == errSecSuccess && requirement != nullptr
               ? std::make_unique<Requirement>(requirement)
               : nullptr;
}

bool DarwinCodeIdentity::checkValidity(const GuestCode& code, const CodeRequirement& requirement) {
    return SecCodeCheckValidity(static_cast<const Guest&>(code).get(), kSecCSDefaultFlags,
                                static_cast<const Requirement&>(requirement).get()) ==
           errSecSuccess;
}

} // namespace vantor::darwin
