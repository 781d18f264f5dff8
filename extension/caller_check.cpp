#include "extension/caller_check.h"

#include "platform/code_identity.h"
#include "platform/xpc.h"

namespace vantor::CallerCheck {

bool isApple(CodeIdentity& identity, const XPCConnection& connection) {
    const auto code = identity.copyGuest(connection.processIdentifier());
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
