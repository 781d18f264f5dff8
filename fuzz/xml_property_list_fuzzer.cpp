// Reads any bytes as a property list in XML.

#include "fuzz/property_list_check.h"
#include "platform/linux/archive/xml_property_list_reader.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    vantor::checkReadList(vantor::archive::readXMLPropertyList({data, size}));
    return 0;
}
