#pragma once
// Instances of the platform's plain classes: a property-list value as an object of the runtime.
//
//   class         value
//   NSString      text
//   NSNumber      boolean, integer or real
//   NSData        data
//   NSArray       array
//   NSDictionary  dictionary
//   NSURL         dictionary with the key "relative" (the text) and, where there is one, "base"
//   NSError       dictionary with "NSDomain", "NSCode" and, where there is one, "NSUserInfo"

#include "platform/object_runtime.h"

#include <array>
#include <memory>
#include <string_view>

namespace vantor {

inline constexpr std::array<std::string_view, 7> kPlainClassNames{
    "NSString", "NSNumber", "NSData", "NSArray", "NSDictionary", "NSURL", "NSError"};

/// A plain object answers this key of `valueForKey` with its whole value.
inline constexpr std::string_view kPlainValueKey = "self";

bool isPlainClassName(std::string_view name);

/// The class of that plain name, which decodes no instance from keys: plain objects are read by the
/// unarchiver itself. Null for other names.
std::unique_ptr<const ObjectClass> makePlainClass(std::string_view name);

/// An instance of `objectClass`, whose name is a plain one. The class must outlive it.
ObjectRef makePlainObject(const ObjectClass& objectClass, PropertyList value);

} // namespace vantor
