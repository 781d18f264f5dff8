#pragma once

#include "platform/code_identity.h"

namespace vantor::darwin {

/// Code Signing Services.
class DarwinCodeIdentity : public CodeIdentity {
  public:
    std::unique_ptr<GuestCode> copyGuest(int processIdentifier) override;
    std::unique_ptr<CodeRequirement> requirement(std::string_view text) override;
    bool checkValidity(const GuestCode& code, const CodeRequirement& requirement) override;
};

} // namespace vantor::darwin
