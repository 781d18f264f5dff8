#include "platform/darwin/darwin_system.h"

#include "platform/darwin/darwin_xpc_connection.h"
#include "platform/darwin/swift_interface.h"

#include <cstdlib>

namespace vantor::darwin {
namespace {

/// What the one call of `main` was given, for Swift to call back.
std::function<std::unique_ptr<AppExtension>()> makePrincipal;
/// Never destroyed.
AppExtension* principal = nullptr;

} // namespace

Result<Done, std::string> DarwinAppExtensionRuntime::main(
    const std::function<std::unique_ptr<AppExtension>()>& makePrincipalObject) {
    makePrincipal = makePrincipalObject;
    char* failure = VantorRunAppExtension();
    if (failure == nullptr) {
        return Done{};
    }
    std::string message = failure;
    std::free(failure);
    return Failure{std::move(message)};
}

} // namespace vantor::darwin

void VantorExtensionConstruct() {
    vantor::darwin::principal = vantor::darwin::makePrincipal().release();
}

bool VantorExtensionAccept(const void* connection) {
    return vantor::darwin::principal->configuration().accept(
        vantor::darwin::makeXPCConnection(vantor::darwin::NativeRef(connection)));
}
