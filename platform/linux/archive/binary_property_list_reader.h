#pragma once
// Reads the binary form ("bplist00"): a table of objects that refer to each other by number, its
// layout as published in CoreFoundation's open-source CFBinaryPList.c.

#include "platform/property_list.h"

#include <span>

namespace vantor::archive {

/// Every offset, count and reference is checked against the bytes that are there, and the limits of
/// limits.h hold. Reads integers of 1 to 16 bytes that fit 64 bits. Refuses null values and sets,
/// which no property list holds.
Result<PropertyList> readBinaryPropertyList(std::span<const std::uint8_t> bytes);

} // namespace vantor::archive
