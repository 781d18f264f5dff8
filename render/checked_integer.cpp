#include "render/checked_integer.h"

#include <cstdio>
#include <cstdlib>

namespace vantor {

std::int64_t truncatedInteger(double value, const char* what) {
    constexpr double kLimit = 9223372036854775808.0; // 2^63, the first double out of range
    if (!(value >= -kLimit && value < kLimit)) {
        std::fprintf(stderr, "%s of %g is no 64-bit integer\n", what, value);
        std::abort();
    }
    return static_cast<std::int64_t>(value);
}

std::size_t checkedProduct(std::size_t a, std::size_t b, const char* what) {
    std::size_t product = 0;
    if (__builtin_mul_overflow(a, b, &product)) {
        std::fprintf(stderr, "%s of %zu times %zu exceeds the address space\n", what, a, b);
        std::abort();
    }
    return product;
}

} // namespace vantor
