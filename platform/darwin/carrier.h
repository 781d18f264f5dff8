#pragma once
// The carrier as a class of the Objective-C runtime.

#include "platform/darwin/native_ref.h"

#include <functional>
#include <string_view>

namespace vantor::darwin {

/// The carriers' class name, which archives hold.
inline constexpr std::string_view kCarrierClassName = "VantorXPCCarrier";

/// A carrier that archives itself by calling `encodeBody` with the NSKeyedArchiver, which it owns.
NativeRef makeCarrier(std::function<void(const void* archiver)> encodeBody);

} // namespace vantor::darwin
