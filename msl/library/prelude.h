// The part of the library that is made of templates, written in the language itself. A source that
// uses none of its names does not pay for it.
#pragma once

#include <span>
#include <string_view>

namespace msl {

// The names that the text below declares for others to use.
std::span<const std::string_view> preludeNames();
std::string_view preludeText();

} // namespace msl
