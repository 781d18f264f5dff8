// Names of the language that are known and refused.
#pragma once

#include <string_view>

namespace msl {

// A sentence that says what the name is for and what to do instead; empty for any other name.
std::string_view unsupportedReason(std::string_view name);

// What the language calls something that other shading languages call `name`; empty where they
// agree, or nothing is known.
std::string_view nameHere(std::string_view name);

} // namespace msl
