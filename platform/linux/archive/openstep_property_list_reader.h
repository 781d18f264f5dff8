#pragma once
// Reads the OpenStep text form: quoted and plain strings, <data>, (arrays) and {dictionaries}, with
// comments; entries without braces are a dictionary. Text is UTF-8.

#include "platform/property_list.h"

#include <span>

namespace vantor::archive {

Result<PropertyList> readOpenStepPropertyList(std::span<const std::uint8_t> bytes);

} // namespace vantor::archive
