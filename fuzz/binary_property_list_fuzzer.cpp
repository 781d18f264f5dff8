// Reads any bytes as a property list in the binary form.

#include "fuzz/property_list_check.h"
#include "platform/linux/archive/binary_property_list_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantor::checkReadList(vantor::archive::readBinaryPropertyList({data, size}));
    return 0;
}
