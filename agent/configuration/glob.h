#pragma once
// Patterns for names, as shells know them. Any thread.

#include <string_view>

namespace vantor::agent {

/// Whether the whole text fits the pattern: `*` stands for any characters, also none, and `?` for
/// one; everything else for itself. Costs at most the product of both lengths, whatever the
/// pattern.
bool matchesGlob(std::string_view text, std::string_view pattern);

} // namespace vantor::agent
