// as_type between values whose components have fewer than 32 bits: by way of the words that hold
// them.
#include <algorithm>

#include <spirv/unified1/GLSL.std.450.h>

#include "msl/lower/lower.h"

namespace msl {

using ir::Op;

// The words of a value, the first component in the lowest bits.
std::vector<Lowerer::Value> Lowerer::wordsOf(Value held, const Type* type) {
    const Type* scalar = type->scalar();
    const uint32_t bits = scalar->size * 8;
    const uint32_t perWord = 32 / bits;
    std::vector<Value> words(std::max(type->size / 4, 1U), builder_.intConstant(0));
    for (uint32_t i = 0; i < type->components(); ++i) {
        Value part = type->isScalar() ? held : builder_.extract(held, i);
        if (scalar->isFloating() && bits == 16) {
            const Value pair[] = {part, builder_.floatConstant(0.0F)};
            part = builder_.extended(GLSLstd450PackHalf2x16, ir::kInt,
                                     {builder_.construct(ir::vectorOf(ir::kFloat, 2), pair)});
        } else {
            part = builder_.unary(Op::bitcast, ir::kInt, part);
        }
        if (bits < 32) {
            part =
                builder_.binary(Op::bitAnd, ir::kInt, part, builder_.intConstant((1U << bits) - 1));
        }
        part = builder_.binary(Op::shiftLeft, ir::kInt, part,
                               builder_.intConstant(i % perWord * bits));
        words[i / perWord] = builder_.binary(Op::bitOr, ir::kInt, words[i / perWord], part);
    }
    return words;
}

Lowerer::Value Lowerer::fromWords(const std::vector<Value>& words, const Type* type) {
    const Type* scalar = type->scalar();
    const uint32_t bits = scalar->size * 8;
    const uint32_t perWord = 32 / bits;
    std::vector<Value> parts;
    for (uint32_t i = 0; i < type->components(); ++i) {
        Value part = builder_.binary(Op::shiftRightLogical, ir::kInt, words[i / perWord],
                                     builder_.intConstant(i % perWord * bits));
        if (scalar->isFloating() && bits == 16) {
            part = builder_.extract(
                builder_.extended(GLSLstd450UnpackHalf2x16, ir::vectorOf(ir::kFloat, 2), {part}),
                0);
        } else {
            part = builder_.unary(Op::bitcast, irType(scalar), wrapSmall(part, scalar));
        }
        parts.push_back(part);
    }
    return type->isScalar() ? parts[0] : builder_.construct(irType(type), parts);
}

} // namespace msl
