#pragma once
// Values of the seam as Foundation's, and back. The one header that is Objective-C++: for the .mm
// files of this folder.

#include "platform/darwin/native_ref.h"
#include "platform/property_list.h"
#include "platform/result.h"

#import <Foundation/Foundation.h>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <string_view>

namespace vantor::darwin {

/// Nil when the bytes are not UTF-8.
NSString* nsString(std::string_view text);
/// Empty for nil.
std::string stdString(NSString* text);

NSData* nsData(std::span<const std::uint8_t> bytes);
Bytes bytesOf(NSData* data);

NSURL* fileURL(const std::filesystem::path& path);

// Foundation's published error numbers.
inline constexpr int kPropertyListReadCorrupt = 3840;
inline constexpr int kCoderInvalidValue = 4866;
inline Error cocoaError(int code, std::string message) {
    return {.domain = "NSCocoaErrorDomain", .code = code, .message = std::move(message)};
}

NSError* nsError(const Error& error);
Error errorOf(NSError* error);

/// The graph of Foundation objects that keyed encoding archives and property lists hold: nil for
/// archive references and for text that is not UTF-8, which have none.
id foundationGraph(const PropertyList& value);
/// The value of a graph, which may come from anywhere: depth, and the expansion of what it shares,
/// are bounded as on other platforms.
Result<PropertyList> propertyListOf(id graph);

inline NativeRef nativeRef(id object) { return NativeRef((__bridge const void*)object); }

template <typename T>
T native(const NativeRef& object) {
    return (__bridge T)(const_cast<void*>(object.get()));
}

} // namespace vantor::darwin
