#pragma once
// The platform's error numbers for property lists and archives (Foundation's published
// FoundationErrors constants), so that an error reads the same on every system.

#include "platform/result.h"

#include <string>
#include <utility>

namespace vantor::archive {

inline constexpr const char* kCocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr int kPropertyListReadCorrupt = 3840;
inline constexpr int kCoderReadCorrupt = 4864;
inline constexpr int kCoderValueNotFound = 4865;
inline constexpr int kCoderInvalidValue = 4866;

inline Error cocoaError(int code, std::string message) {
    return {.domain = kCocoaErrorDomain, .code = code, .message = std::move(message)};
}

} // namespace vantor::archive
