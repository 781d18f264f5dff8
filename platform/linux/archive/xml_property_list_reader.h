#pragma once
// Reads the XML form. Expat takes the markup apart.

#include "platform/property_list.h"

#include <span>

namespace vantor::archive {

/// The limits of limits.h hold. A document that declares entities is refused, so nothing in it
/// expands, and nothing outside the bytes is ever loaded. A dictionary with the one key "CF$UID" is
/// an archive reference.
Result<PropertyList> readXMLPropertyList(std::span<const std::uint8_t> bytes);

} // namespace vantor::archive
