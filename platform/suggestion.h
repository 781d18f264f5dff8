#pragma once
// What a misspelt word was probably meant to be.

#include <span>
#include <string>
#include <string_view>

namespace vantor {

/// "; did you mean "…"?" for the candidate nearest to `word`, or nothing when none is near. Letter
/// case does not count, nor does what stands before a candidate's last full stop.
std::string didYouMean(std::string_view word, std::span<const std::string_view> candidates);

} // namespace vantor
