#pragma once
// Property lists on Linux: the encoding is told apart by its first bytes and read by the reader of
// that form. Free of state; any thread.

#include "platform/property_list.h"

namespace vantor {

class PropertyListCodec final : public PropertyListSerialization {
  public:
    Result<PropertyList> read(std::span<const std::uint8_t> bytes) override;
    Bytes writeBinary(const PropertyList& root) override;

    /// Whether the bytes begin as the binary form does.
    static bool isBinary(std::span<const std::uint8_t> bytes);
};

} // namespace vantor
