#pragma once

#include "platform/property_list.h"

namespace vantor::darwin {

/// NSPropertyListSerialization.
class DarwinPropertyLists : public PropertyListSerialization {
  public:
    Result<PropertyList> read(std::span<const std::uint8_t> bytes) override;
    Bytes writeBinary(const PropertyList& root) override;
};

} // namespace vantor::darwin
