#pragma once
// Property lists as JSON text (RFC 8259), for the commands' `--json`.

#include "platform/property_list.h"

#include <string>

namespace vantor {

/// The value with two spaces of indentation for each level, a line feed at its end. JSON has no
/// words for everything: a number that is not finite becomes null, data its length in bytes, a date
/// its seconds since 2001 and a reference its number.
std::string toJSON(const PropertyList& value);

} // namespace vantor
