#pragma once
// The scalar values of property lists as text. Each gives nothing for text of another form.

#include "platform/property_list.h"

#include <optional>
#include <string_view>

namespace vantor::archive {

/// Without blanks, tabs and line ends at either end.
std::string_view trimmed(std::string_view text);

/// Decimal or "0x" hexadecimal, signed 64-bit or, above that, unsigned 64-bit.
std::optional<PropertyList> parseInteger(std::string_view text);
/// Decimal, "inf" and "nan" included; independent of the locale.
std::optional<PropertyList> parseReal(std::string_view text);
/// "2001-01-01T00:00:00Z", years 0 to 9999.
std::optional<PropertyList> parseDate(std::string_view text);
/// RFC 4648, blanks and line ends anywhere.
std::optional<PropertyList> parseBase64(std::string_view text);

} // namespace vantor::archive
