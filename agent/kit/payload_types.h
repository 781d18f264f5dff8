#pragma once
// The payloads of the agent's fifteen classes. Requests, replies and the picker's records have the
// fields that the extension reads and writes; the others, which it never looks into, have what
// their purpose needs.

#include "agent/kit/payload_type.h"

#include <span>
#include <string_view>

namespace vantor::agent {

/// One of the agent's classes and what it carries.
struct KitClassInfo {
    std::string_view className;
    /// The payload type's name, under which it is archived.
    std::string_view payloadKey;
    const PayloadType& payload;
};

/// In the protocol's order.
std::span<const KitClassInfo> kitClassInfos();

} // namespace vantor::agent
