#include "msl/library/library.h"

#include <algorithm>
#include <array>

#include <spirv/unified1/GLSL.std.450.h>
#include <spirv/unified1/spirv.hpp>

namespace msl {
namespace {

using enum TypeClass;

constexpr LibraryFunction ext(std::string_view name, std::string_view signature, TypeClass types,
                              GLSLstd450 code, int signedCode = 0, int unsignedCode = 0) {
    return {name,
            signature,
            types,
            Lowering::extended,
            static_cast<uint16_t>(code),
            static_cast<uint16_t>(signedCode),
            static_cast<uint16_t>(unsignedCode),
            Special::none};
}

constexpr LibraryFunction op(std::string_view name, std::string_view signature, TypeClass types,
                             ir::Op code) {
    return {name, signature, types,        Lowering::operation, static_cast<uint16_t>(code),
            0,    0,         Special::none};
}

constexpr LibraryFunction special(std::string_view name, std::string_view signature,
                                  TypeClass types, Special what) {
    return {name, signature, types, Lowering::special, 0, 0, 0, what};
}

constexpr LibraryFunction group(std::string_view name, TypeClass types, Special what,
                                spv::Op floats, spv::Op signedOnes, spv::Op unsignedOnes) {
    return {name,
            "TT",
            types,
            Lowering::special,
            static_cast<uint16_t>(floats),
            static_cast<uint16_t>(signedOnes),
            static_cast<uint16_t>(unsignedOnes),
            what};
}

constexpr LibraryFunction across(std::string_view name, std::string_view signature, TypeClass types,
                                 spv::Op code) {
    return {name, signature,          types, Lowering::special, static_cast<uint16_t>(code), 0,
            0,    Special::groupPlain};
}

constexpr LibraryFunction quad(std::string_view name, std::string_view signature, TypeClass types,
                               Special what, ir::Op floats, ir::Op integers = ir::Op::none) {
    return {name,
            signature,
            types,
            Lowering::special,
            static_cast<uint16_t>(floats),
            static_cast<uint16_t>(integers),
            0,
            what};
}

// The Metal Shading Language specification, chapter 6; instructions as GLSL.std.450 numbers them.
// Overloads of one name stand together; names are in alphabetical order.
constexpr LibraryFunction kFunctions[] = {
    special("abs", "TT", arithmetic, Special::abs),
    special("absdiff", "UTT", integer, Special::absdiff),
    ext("acos", "TT", floating, GLSLstd450Acos),
    ext("acosh", "TT", floating, GLSLstd450Acosh),
    special("addsat", "TTT", integer, Special::addsat),
    special("all", "bT", boolean, Special::all),
    special("any", "bT", boolean, Special::any),
    ext("asin", "TT", floating, GLSLstd450Asin),
    ext("asinh", "TT", floating, GLSLstd450Asinh),
    ext("atan", "TT", floating, GLSLstd450Atan),
    ext("atan2", "TTT", floating, GLSLstd450Atan2),
    ext("atanh", "TT", floating, GLSLstd450Atanh),
    ext("ceil", "TT", floating, GLSLstd450Ceil),
    special("clamp", "TTTT", arithmetic, Special::clamp),
    special("clz", "TT", integer, Special::clz),
    special("copysign", "TTT", floating, Special::copysign),
    ext("cos", "TT", floating, GLSLstd450Cos),
    ext("cosh", "TT", floating, GLSLstd450Cosh),
    special("cospi", "TT", floating, Special::cospi),
    ext("cross", "TTT", floatVector, GLSLstd450Cross),
    special("ctz", "TT", integer, Special::ctz),
    special("determinant", "DM", squareMatrix, Special::determinant),
    op("dfdx", "TT", floating, ir::Op::dpdx),
    op("dfdy", "TT", floating, ir::Op::dpdy),
    special("discard_fragment", "v", none, Special::discard),
    ext("distance", "STT", floating, GLSLstd450Distance),
    special("distance_squared", "STT", floating, Special::distanceSquared),
    special("divide", "TTT", floating, Special::divide),
    op("dot", "STT", floatVector, ir::Op::dot),
    ext("exp", "TT", floating, GLSLstd450Exp),
    special("exp10", "TT", floating, Special::exp10),
    ext("exp2", "TT", floating, GLSLstd450Exp2),
    special("extract_bits", "TTuu", integer, Special::extractBits),
    ext("fabs", "TT", floating, GLSLstd450FAbs),
    ext("faceforward", "TTTT", floatVector, GLSLstd450FaceForward),
    special("fdim", "TTT", floating, Special::fdim),
    ext("floor", "TT", floating, GLSLstd450Floor),
    ext("fma", "TTTT", floating, GLSLstd450Fma),
    ext("fmax", "TTT", floating, GLSLstd450NMax),
    special("fmax3", "TTTT", floating, Special::max3),
    special("fmedian3", "TTTT", floating, Special::median3),
    ext("fmin", "TTT", floating, GLSLstd450NMin),
    special("fmin3", "TTTT", floating, Special::min3),
    special("fmod", "TTT", floating, Special::fmod),
    ext("fract", "TT", floating, GLSLstd450Fract),
    special("frexp", "TTJ", floating, Special::frexp),
    op("fwidth", "TT", floating, ir::Op::fwidth),
    special("hadd", "TTT", integer, Special::hadd),
    special("ilogb", "IT", floating, Special::ilogb),
    special("insert_bits", "TTTuu", integer, Special::insertBits),
    special("isfinite", "BT", floating, Special::isfinite),
    op("isinf", "BT", floating, ir::Op::isInf),
    op("isnan", "BT", floating, ir::Op::isNan),
    special("isnormal", "BT", floating, Special::isnormal),
    special("isordered", "BTT", floating, Special::isordered),
    special("isunordered", "BTT", floating, Special::isunordered),
    special("ldexp", "TTI", floating, Special::ldexp),
    ext("length", "ST", floating, GLSLstd450Length),
    special("length_squared", "ST", floating, Special::lengthSquared),
    ext("log", "TT", floating, GLSLstd450Log),
    special("log10", "TT", floating, Special::log10),
    ext("log2", "TT", floating, GLSLstd450Log2),
    special("mad24", "TTTT", integer, Special::mad),
    special("madhi", "TTTT", integer, Special::madhi),
    special("max", "TTT", arithmetic, Special::max),
    special("max3", "TTTT", arithmetic, Special::max3),
    special("median3", "TTTT", arithmetic, Special::median3),
    special("min", "TTT", arithmetic, Special::min),
    special("min3", "TTTT", arithmetic, Special::min3),
    special("mix", "TTTT", floating, Special::mix),
    special("modf", "TTR", floating, Special::modf),
    op("mul24", "TTT", integer, ir::Op::iMul),
    special("mulhi", "TTT", integer, Special::mulhi),
    special("nextafter", "TTT", floating, Special::nextafter),
    ext("normalize", "TT", floating, GLSLstd450Normalize),
    special("pack_float_to_snorm2x16", "u2", none, Special::packSnorm2),
    special("pack_float_to_snorm4x8", "u4", none, Special::packSnorm4),
    special("pack_float_to_unorm2x16", "u2", none, Special::packUnorm2),
    special("pack_float_to_unorm4x8", "u4", none, Special::packUnorm4),
    special("pack_half_to_snorm2x16", "up", none, Special::packSnorm2),
    special("pack_half_to_snorm4x8", "uq", none, Special::packSnorm4),
    special("pack_half_to_unorm2x16", "up", none, Special::packUnorm2),
    special("pack_half_to_unorm4x8", "uq", none, Special::packUnorm4),
    special("popcount", "TT", integer, Special::popcount),
    special("pow", "TTT", floating, Special::powr),
    special("powr", "TTT", floating, Special::powr),
    quad("quad_all", "bb", none, Special::quadReduce, ir::Op::logicalAnd, ir::Op::logicalAnd),
    quad("quad_and", "TT", integer, Special::quadReduce, ir::Op::bitAnd, ir::Op::bitAnd),
    quad("quad_any", "bb", none, Special::quadReduce, ir::Op::logicalOr, ir::Op::logicalOr),
    quad("quad_broadcast", "TTu", arithmetic, Special::quadShuffle, ir::Op::none),
    quad("quad_max", "TT", arithmetic, Special::quadReduce, ir::Op::none, ir::Op::constant),
    quad("quad_min", "TT", arithmetic, Special::quadReduce, ir::Op::none),
    quad("quad_or", "TT", integer, Special::quadReduce, ir::Op::bitOr, ir::Op::bitOr),
    quad("quad_product", "TT", arithmetic, Special::quadReduce, ir::Op::fMul, ir::Op::iMul),
    quad("quad_shuffle", "TTu", arithmetic, Special::quadShuffle, ir::Op::none),
    quad("quad_shuffle_down", "TTu", arithmetic, Special::quadMove, ir::Op::iAdd),
    quad("quad_shuffle_up", "TTu", arithmetic, Special::quadMove, ir::Op::iSub),
    quad("quad_shuffle_xor", "TTu", arithmetic, Special::quadMove, ir::Op::bitXor),
    quad("quad_sum", "TT", arithmetic, Special::quadReduce, ir::Op::fAdd, ir::Op::iAdd),
    quad("quad_xor", "TT", integer, Special::quadReduce, ir::Op::bitXor, ir::Op::bitXor),
    ext("reflect", "TTT", floatVector, GLSLstd450Reflect),
    ext("refract", "TTTS", floatVector, GLSLstd450Refract),
    special("reverse_bits", "TT", integer, Special::reverseBits),
    special("rhadd", "TTT", integer, Special::rhadd),
    ext("rint", "TT", floating, GLSLstd450RoundEven),
    special("rotate", "TTT", integer, Special::rotate),
    special("round", "TT", floating, Special::round),
    ext("rsqrt", "TT", floating, GLSLstd450InverseSqrt),
    special("saturate", "TT", floating, Special::saturate),
    special("select", "TTTB", anyScalarOrVector, Special::selectParts),
    ext("sign", "TT", floating, GLSLstd450FSign),
    special("signbit", "BT", floating, Special::signbit),
    across("simd_all", "bb", none, spv::OpGroupNonUniformAll),
    group("simd_and", integer, Special::groupReduce, spv::OpGroupNonUniformBitwiseAnd,
          spv::OpGroupNonUniformBitwiseAnd, spv::OpGroupNonUniformBitwiseAnd),
    across("simd_any", "bb", none, spv::OpGroupNonUniformAny),
    across("simd_broadcast", "TTu", arithmetic, spv::OpGroupNonUniformShuffle),
    across("simd_broadcast_first", "TT", arithmetic, spv::OpGroupNonUniformBroadcastFirst),
    across("simd_is_first", "b", none, spv::OpGroupNonUniformElect),
    group("simd_max", arithmetic, Special::groupReduce, spv::OpGroupNonUniformFMax,
          spv::OpGroupNonUniformSMax, spv::OpGroupNonUniformUMax),
    group("simd_min", arithmetic, Special::groupReduce, spv::OpGroupNonUniformFMin,
          spv::OpGroupNonUniformSMin, spv::OpGroupNonUniformUMin),
    group("simd_or", integer, Special::groupReduce, spv::OpGroupNonUniformBitwiseOr,
          spv::OpGroupNonUniformBitwiseOr, spv::OpGroupNonUniformBitwiseOr),
    group("simd_prefix_exclusive_product", arithmetic, Special::groupExclusive,
          spv::OpGroupNonUniformFMul, spv::OpGroupNonUniformIMul, spv::OpGroupNonUniformIMul),
    group("simd_prefix_exclusive_sum", arithmetic, Special::groupExclusive,
          spv::OpGroupNonUniformFAdd, spv::OpGroupNonUniformIAdd, spv::OpGroupNonUniformIAdd),
    group("simd_prefix_inclusive_product", arithmetic, Special::groupInclusive,
          spv::OpGroupNonUniformFMul, spv::OpGroupNonUniformIMul, spv::OpGroupNonUniformIMul),
    group("simd_prefix_inclusive_sum", arithmetic, Special::groupInclusive,
          spv::OpGroupNonUniformFAdd, spv::OpGroupNonUniformIAdd, spv::OpGroupNonUniformIAdd),
    group("simd_product", arithmetic, Special::groupReduce, spv::OpGroupNonUniformFMul,
          spv::OpGroupNonUniformIMul, spv::OpGroupNonUniformIMul),
    across("simd_shuffle", "TTu", arithmetic, spv::OpGroupNonUniformShuffle),
    across("simd_shuffle_down", "TTu", arithmetic, spv::OpGroupNonUniformShuffleDown),
    across("simd_shuffle_up", "TTu", arithmetic, spv::OpGroupNonUniformShuffleUp),
    across("simd_shuffle_xor", "TTu", arithmetic, spv::OpGroupNonUniformShuffleXor),
    group("simd_sum", arithmetic, Special::groupReduce, spv::OpGroupNonUniformFAdd,
          spv::OpGroupNonUniformIAdd, spv::OpGroupNonUniformIAdd),
    group("simd_xor", integer, Special::groupReduce, spv::OpGroupNonUniformBitwiseXor,
          spv::OpGroupNonUniformBitwiseXor, spv::OpGroupNonUniformBitwiseXor),
    ext("sin", "TT", floating, GLSLstd450Sin),
    special("sincos", "TTR", floating, Special::sincos),
    ext("sinh", "TT", floating, GLSLstd450Sinh),
    special("sinpi", "TT", floating, Special::sinpi),
    ext("smoothstep", "TTTT", floating, GLSLstd450SmoothStep),
    ext("sqrt", "TT", floating, GLSLstd450Sqrt),
    ext("step", "TTT", floating, GLSLstd450Step),
    special("subsat", "TTT", integer, Special::subsat),
    ext("tan", "TT", floating, GLSLstd450Tan),
    ext("tanh", "TT", floating, GLSLstd450Tanh),
    special("tanpi", "TT", floating, Special::tanpi),
    op("transpose", "xM", matrix, ir::Op::transpose),
    ext("trunc", "TT", floating, GLSLstd450Trunc),
    special("unpack_snorm2x16_to_float", "2u", none, Special::unpackSnorm2),
    special("unpack_snorm2x16_to_half", "pu", none, Special::unpackSnorm2),
    special("unpack_snorm4x8_to_float", "4u", none, Special::unpackSnorm4),
    special("unpack_snorm4x8_to_half", "qu", none, Special::unpackSnorm4),
    special("unpack_unorm2x16_to_float", "2u", none, Special::unpackUnorm2),
    special("unpack_unorm2x16_to_half", "pu", none, Special::unpackUnorm2),
    special("unpack_unorm4x8_to_float", "4u", none, Special::unpackUnorm4),
    special("unpack_unorm4x8_to_half", "qu", none, Special::unpackUnorm4),
};

static_assert(std::is_sorted(std::begin(kFunctions), std::end(kFunctions),
                             [](const auto& a, const auto& b) { return a.name < b.name; }));

constexpr LibraryFunction kTextureMembers[] = {
    special("calculate_clamped_lod", "", none, Special::clampedLod),
    special("calculate_unclamped_lod", "", none, Special::unclampedLod),
    special("fence", "", none, Special::fence),
    special("gather", "", none, Special::gather),
    special("gather_compare", "", none, Special::gatherCompare),
    special("get_array_size", "", none, Special::arraySize),
    special("get_depth", "", none, Special::depth),
    special("get_height", "", none, Special::height),
    special("get_num_mip_levels", "", none, Special::mipLevels),
    special("get_num_samples", "", none, Special::samples),
    special("get_width", "", none, Special::width),
    special("read", "", none, Special::read),
    special("sample", "", none, Special::sample),
    special("sample_compare", "", none, Special::sampleCompare),
    special("write", "", none, Special::write),
};

} // namespace

std::span<const LibraryFunction> findLibraryFunctions(Name name) {
    if (!name->libraryKnown) {
        name->libraryKnown = true;
        const auto range =
            std::equal_range(std::begin(kFunctions), std::end(kFunctions),
                             LibraryFunction{.name = name->text, .signature = {}},
                             [](const auto& a, const auto& b) { return a.name < b.name; });
        name->libraryFirst = static_cast<uint16_t>(range.first - std::begin(kFunctions));
        name->libraryCount = static_cast<uint16_t>(range.second - range.first);
    }
    return std::span(kFunctions).subspan(name->libraryFirst, name->libraryCount);
}

const LibraryFunction* findTextureMember(std::string_view name) {
    const auto* found = std::find_if(std::begin(kTextureMembers), std::end(kTextureMembers),
                                     [&](const auto& member) { return member.name == name; });
    return found == std::end(kTextureMembers) ? nullptr : found;
}

std::vector<std::string_view> textureMemberNames() {
    std::vector<std::string_view> names;
    for (const auto& member : kTextureMembers) {
        names.push_back(member.name);
    }
    return names;
}

std::span<const LibraryFunction> allLibraryFunctions() { return kFunctions; }

} // namespace msl
