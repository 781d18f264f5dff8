#include <bit>
#include <cmath>

#include "msl/ir/builder.h"

namespace msl::ir {
namespace {

float asFloat(uint64_t bits) { return std::bit_cast<float>(static_cast<uint32_t>(bits)); }
uint64_t bitsOf(float value) { return std::bit_cast<uint32_t>(value); }

uint64_t truncated(TypeId type, uint64_t bits) { return type == kLong ? bits : bits & UINT32_MAX; }

int64_t asSigned(TypeId type, uint64_t bits) {
    return type == kLong ? static_cast<int64_t>(bits)
                         : static_cast<int64_t>(static_cast<int32_t>(bits));
}

std::optional<uint64_t> foldFloat(Op op, float a, float b) {
    switch (op) {
    case Op::fAdd:
        return bitsOf(a + b);
    case Op::fSub:
        return bitsOf(a - b);
    case Op::fMul:
        return bitsOf(a * b);
    case Op::fDiv:
        return b == 0.0F ? std::nullopt : std::optional(bitsOf(a / b));
    case Op::fRem:
        return b == 0.0F ? std::nullopt : std::optional(bitsOf(std::fmod(a, b)));
    case Op::fEqual:
        return a == b;
    case Op::fNotEqual:
        return a != b;
    case Op::fLess:
        return a < b;
    case Op::fGreater:
        return a > b;
    case Op::fLessEqual:
        return a <= b;
    case Op::fGreaterEqual:
        return a >= b;
    default:
        return std::nullopt;
    }
}

} // namespace

std::optional<uint64_t> foldScalar(Op op, TypeId type, uint64_t a, uint64_t b) {
    if (type == kFloat) {
        return foldFloat(op, asFloat(a), asFloat(b));
    }
    const uint64_t shift = b & (type == kLong ? 63U : 31U);
    const int64_t sa = asSigned(type, a);
    const int64_t sb = asSigned(type, b);
    switch (op) {
    case Op::iAdd:
        return truncated(type, a + b);
    case Op::iSub:
        return truncated(type, a - b);
    case Op::iMul:
        return truncated(type, a * b);
    case Op::sDiv:
        return sb == 0 || sb == -1 ? std::nullopt
                                   : std::optional(truncated(type, static_cast<uint64_t>(sa / sb)));
    case Op::sRem:
        return sb == 0 || sb == -1 ? std::nullopt
                                   : std::optional(truncated(type, static_cast<uint64_t>(sa % sb)));
    case Op::uDiv:
        return b == 0 ? std::nullopt : std::optional(a / b);
    case Op::uMod:
        return b == 0 ? std::nullopt : std::optional(a % b);
    case Op::shiftLeft:
        return truncated(type, a << shift);
    case Op::shiftRightLogical:
        return a >> shift;
    case Op::shiftRightArithmetic:
        return truncated(type, static_cast<uint64_t>(sa >> shift));
    case Op::bitAnd:
    case Op::logicalAnd:
        return a & b;
    case Op::bitOr:
    case Op::logicalOr:
        return a | b;
    case Op::bitXor:
        return a ^ b;
    case Op::iEqual:
    case Op::logicalEqual:
        return a == b;
    case Op::iNotEqual:
    case Op::logicalNotEqual:
        return a != b;
    case Op::sLess:
        return sa < sb;
    case Op::sGreater:
        return sa > sb;
    case Op::sLessEqual:
        return sa <= sb;
    case Op::sGreaterEqual:
        return sa >= sb;
    case Op::uLess:
        return a < b;
    case Op::uGreater:
        return a > b;
    case Op::uLessEqual:
        return a <= b;
    case Op::uGreaterEqual:
        return a >= b;
    default:
        return std::nullopt;
    }
}

std::optional<uint64_t> foldScalar(Op op, TypeId type, TypeId resultType, uint64_t a) {
    switch (op) {
    case Op::fNegate:
        return bitsOf(-asFloat(a));
    case Op::sNegate:
        return truncated(type, 0 - a);
    case Op::bitNot:
        return truncated(type, ~a);
    case Op::logicalNot:
        return a == 0;
    case Op::floatToSigned: {
        const float value = asFloat(a);
        const float limit = resultType == kLong ? 0x1p63F : 0x1p31F;
        return value >= -limit && value < limit
                   ? std::optional(
                         truncated(resultType, static_cast<uint64_t>(static_cast<int64_t>(value))))
                   : std::nullopt;
    }
    case Op::floatToUnsigned: {
        const float value = asFloat(a);
        const float limit = resultType == kLong ? 0x1p64F : 0x1p32F;
        return value > -1.0F && value < limit ? std::optional(static_cast<uint64_t>(value))
                                              : std::nullopt;
    }
    case Op::signedToFloat:
        return bitsOf(static_cast<float>(asSigned(type, a)));
    case Op::unsignedToFloat:
        return bitsOf(static_cast<float>(a));
    case Op::signedWiden:
        return truncated(resultType, static_cast<uint64_t>(asSigned(type, a)));
    case Op::unsignedWiden:
        return truncated(resultType, a);
    case Op::isNan:
        return std::isnan(asFloat(a));
    case Op::isInf:
        return std::isinf(asFloat(a));
    case Op::bitCount:
        return type == kLong ? std::nullopt : std::optional<uint64_t>(std::popcount(a));
    default:
        return std::nullopt;
    }
}

} // namespace msl::ir
