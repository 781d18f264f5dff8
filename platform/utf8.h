#pragma once
// UTF-8 as RFC 3629 defines it.

#include <string_view>

namespace vantor {

/// Overlong forms, surrogates and characters beyond U+10FFFF are malformed.
bool isUTF8(std::string_view text);

} // namespace vantor
