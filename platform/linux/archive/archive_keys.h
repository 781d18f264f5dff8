#pragma once
// The names in a keyed archive, as the platform's archiver writes them.

#include <cstdint>
#include <string>
#include <string_view>

namespace vantor::archive {

inline constexpr std::string_view kVersionKey = "$version";
inline constexpr std::int64_t kArchiveVersion = 100000;
inline constexpr std::string_view kArchiverKey = "$archiver";
inline constexpr std::string_view kArchiverName = "NSKeyedArchiver";
inline constexpr std::string_view kTopKey = "$top";
inline constexpr std::string_view kRootKey = "root";
inline constexpr std::string_view kObjectTableKey = "$objects";
/// The first of "$objects": a reference to it is a reference to nothing.
inline constexpr std::string_view kNullObject = "$null";

inline constexpr std::string_view kClassKey = "$class";
inline constexpr std::string_view kClassNameKey = "$classname";
inline constexpr std::string_view kClassesKey = "$classes";
inline constexpr std::string_view kRootClassName = "NSObject";

inline constexpr std::string_view kObjectsKey = "NS.objects";
inline constexpr std::string_view kKeysKey = "NS.keys";
inline constexpr std::string_view kStringKey = "NS.string";
inline constexpr std::string_view kDataKey = "NS.data";
inline constexpr std::string_view kTimeKey = "NS.time";
inline constexpr std::string_view kBaseKey = "NS.base";
inline constexpr std::string_view kRelativeKey = "NS.relative";
inline constexpr std::string_view kErrorDomain = "NSDomain";
inline constexpr std::string_view kErrorCode = "NSCode";
inline constexpr std::string_view kErrorUserInfo = "NSUserInfo";

/// The keys of a URL as a value; the platform encodes one inside a record with the same.
inline constexpr std::string_view kURLBase = "base";
inline constexpr std::string_view kURLRelative = "relative";

/// "$" begins the archive's own names, so a key of an object that begins with it gets another.
inline std::string escapedKey(std::string_view key) {
    return (key.starts_with('$') ? "$" : "") + std::string(key);
}

} // namespace vantor::archive
