#pragma once
// What an encoded property list or keyed archive may cost its reader. The bytes may come from
// anywhere, so every figure is checked before memory is taken for what it announces.

#include <cstddef>

namespace vantor::archive {

/// Bytes of one encoded property list.
inline constexpr std::size_t kMaxEncodedBytes = std::size_t{16} << 20;
/// Objects of one binary property list.
inline constexpr std::size_t kMaxObjects = std::size_t{1} << 18;
/// Values of the tree that is read, an object that is referenced twice counting twice.
inline constexpr std::size_t kMaxExpandedValues = std::size_t{1} << 18;
/// Bytes of text and data of the tree that is read, likewise.
inline constexpr std::size_t kMaxExpandedBytes = std::size_t{20} << 20;
/// Containers within containers. Readers recurse once a level.
inline constexpr std::size_t kMaxDepth = 512;

} // namespace vantor::archive
