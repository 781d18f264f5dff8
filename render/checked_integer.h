#pragma once
// Numbers that must fit: one that does not is a fault of the program and stops it.

#include <cstddef>
#include <cstdint>

namespace vantor {

/// `value` truncated towards zero. It must be finite and in the range of the result; `what` names
/// it in the message otherwise.
std::int64_t truncatedInteger(double value, const char* what);

/// The product of two sizes; it must fit.
std::size_t checkedProduct(std::size_t a, std::size_t b, const char* what);

} // namespace vantor
