#pragma once
// Numbers as the log writes them.

#include <string>

namespace vantor {

/// The shortest decimal text that reads back as `value`, with at least one digit after the point:
/// "2.0", "1.5", "0.1". Very large and very small values carry an exponent ("1e+16"); "inf", "-inf"
/// and "nan" stand for what is no number.
std::string decimalText(double value);

} // namespace vantor
