#pragma once
// What holds for every property list that a reader accepts.

#include "platform/linux/archive/property_list_codec.h"

#include <cstdlib>

namespace vantor {

/// The list is written and must read back the same.
inline void checkReadList(const Result<PropertyList>& list) {
    if (!list) {
        if (list.error().message.empty()) {
            std::abort();
        }
        return;
    }
    PropertyListCodec codec;
    const Bytes written = codec.writeBinary(list.value());
    const auto again = codec.read(written);
    // Writing may exceed a limit that reading kept within. NaN equals nothing, so the two are
    // compared as they are written.
    if (again && codec.writeBinary(again.value()) != written) {
        std::abort();
    }
}

} // namespace vantor
