#pragma once
// What a function needs that the device does not offer or nothing here binds.

#include "msl/msl.h"

#include <optional>
#include <string>

namespace vantor::vulkan {

/// What a device offers beyond the least that is asked of every one.
struct DeviceAbilities {
    bool int64 = false;
    /// In fragment functions: vote, arithmetic, ballot, shuffle, relative shuffle and quad.
    bool subgroups = false;
};

/// A sentence about the first thing that is missing; nothing when a pipeline may be made.
std::optional<std::string> unmetNeed(const DeviceAbilities& abilities, const msl::Module& module,
                                     const msl::EntryPoint& entry);

} // namespace vantor::vulkan
