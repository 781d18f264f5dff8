#include "extension/caller_check.h"

#include "platform/code_identity.h"

namespace vantor::CallerCheck {

bool isApple(CodeIdentity& identity, int processIdentifier) {
    const auto code = identity.copyGuest(processIdentifier);
    if (!code) {
        return true;
    }
    const auto requirement = identity.requirement("anchor apple");
    if (!requirement) {
        return true;
    }
    return identity.checkValidity(*code, *requirement);
}

} // namespace vantor::CallerCheck
