// Reads any bytes as a property list. What was read is written and must read back the same.

#include "platform/linux/archive/property_list_codec.h"

#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantor::PropertyListCodec codec;
    const auto list = codec.read({data, size});
    if (!list) {
        return 0;
    }
    const vantor::Bytes written = codec.writeBinary(list.value());
    const auto again = codec.read(written);
    // NaN equals nothing, so the two are compared as they are written.
    if (again && codec.writeBinary(again.value()) != written) {
        std::abort();
    }
    return 0;
}
