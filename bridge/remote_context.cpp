#include "bridge/remote_context.h"

#include "platform/platform.h"

#include <cmath>

namespace vantor::PrivateBridge {
namespace {

/// The number's lower 32 bits, as the platform's `unsignedIntValue` takes them; 0 for what is no
/// number.
std::uint32_t unsignedIntValue(const PropertyList& value) {
    if (const bool* flag = value.boolean()) {
        return *flag ? 1 : 0;
    }
    if (const std::int64_t* number = value.integer()) {
        return static_cast<std::uint32_t>(*number);
    }
    if (const std::uint64_t* number = value.unsignedInteger()) {
        return static_cast<std::uint32_t>(*number);
    }
    if (const double* number = value.real()) {
        const double whole = std::trunc(*number);
        return whole > 0 && whole <= 4294967295.0 ? static_cast<std::uint32_t>(whole) : 0;
    }
    return 0;
}

} // namespace

std::shared_ptr<RemoteContext> makeRemoteContext(Platform& platform,
                                                 std::optional<std::uint32_t> displayID) {
    constexpr std::string_view kMaker = "remoteContextWithOptions:";
    const ObjectClass* contextClass = platform.objectRuntime().classNamed("CAContext");
    if (contextClass == nullptr || !contextClass->isObjectSubclass()) {
        return nullptr;
    }
    PropertyListDictionary options;
    if (displayID) {
        options.set("displayId", *displayID);
    }
    if (!contextClass->respondsTo(kMaker)) {
        return nullptr;
    }
    ObjectRef context = contextClass->perform(kMaker, options);
    if (!context) {
        return nullptr;
    }
    const auto identifier = context->valueForKey("contextId");
    const std::uint32_t contextID = identifier ? unsignedIntValue(*identifier) : 0;
    if (contextID == 0) {
        return nullptr;
    }
    return std::make_shared<RemoteContext>(std::move(context), contextID);
}

} // namespace vantor::PrivateBridge
