// Bounds on what a source may ask of the compiler. Each ends in a diagnostic. They stand far above
// what people write and low enough that a hostile source costs little.
#pragma once

#include <cstdint>

namespace msl {

inline constexpr uint32_t kMaxSourceBytes = 4U << 20;
inline constexpr uint32_t kMaxTokens = 1U << 19;         // after preprocessing
inline constexpr uint32_t kMaxExpandedTokens = 1U << 19; // moved by macro expansion in all
inline constexpr uint32_t kMaxIncludeDepth = 32;
inline constexpr uint32_t kMaxMacroDepth = 200;
inline constexpr uint32_t kMaxConditionDepth = 128;
inline constexpr uint32_t kMaxNesting = 256;         // parentheses, blocks, declarators
inline constexpr uint32_t kMaxExpressionDepth = 600; // of the tree, long sums included
inline constexpr uint32_t kMaxTemplateInstances = 1024;
inline constexpr uint32_t kMaxTemplateDepth = 32;
inline constexpr uint32_t kMaxArrayLength = 1U << 16;
inline constexpr uint32_t kMaxTypeBytes = 1U << 20;
inline constexpr uint32_t kMaxTypeLeaves = 1U << 12;       // scalars and vectors in one value
inline constexpr uint32_t kMaxConstantSteps = 1U << 16;    // for one constant
inline constexpr uint32_t kMaxAllConstantSteps = 1U << 22; // for those of a source
inline constexpr uint32_t kMaxConstantScalars = 1U << 14;  // in a value known when compiling
inline constexpr uint32_t kMaxLoweringDepth = 1600;        // nested statements, expressions, calls
inline constexpr uint32_t kMaxLoweringSteps = 4U << 20;    // statements and expressions in all
inline constexpr uint32_t kMaxInstructions = 1U << 20;
inline constexpr uint32_t kMaxWays = 1U << 14;         // into one place, or cases of one switch
inline constexpr uint32_t kMaxMergedValues = 1U << 23; // that ways bring to where they meet, in all
inline constexpr uint32_t kMaxErrors = 20;

} // namespace msl
