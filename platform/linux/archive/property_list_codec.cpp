#include "platform/linux/archive/property_list_codec.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/binary_property_list_reader.h"
#include "platform/linux/archive/binary_property_list_writer.h"
#include "platform/linux/archive/limits.h"
#include "platform/linux/archive/openstep_property_list_reader.h"
#include "platform/linux/archive/scalar_text.h"
#include "platform/linux/archive/xml_property_list_reader.h"

#include <algorithm>

namespace vantor {

using namespace archive;

Result<PropertyList> PropertyListCodec::read(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > kMaxEncodedBytes) {
        return Failure{cocoaError(kPropertyListReadCorrupt, "property list of " +
                                                                std::to_string(bytes.size()) +
                                                                " bytes exceeds the limit of " +
                                                                std::to_string(kMaxEncodedBytes))};
    }
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    if (isBinary(bytes)) {
        return readBinaryPropertyList(bytes);
    }
    if (text.starts_with("bplist")) {
        return Failure{
            cocoaError(kPropertyListReadCorrupt, "binary property list of an unknown version")};
    }
    // UTF-16 is left to the XML parser, which knows its byte order marks.
    if (text.starts_with("\xfe\xff") || text.starts_with("\xff\xfe")) {
        return readXMLPropertyList(bytes);
    }
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    const std::size_t mark = text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    const std::string_view content = trimmed(text.substr(mark));
    if (content.starts_with("<?") || content.starts_with("<!") || content.starts_with("<plist")) {
        return readXMLPropertyList(bytes);
    }
    return readOpenStepPropertyList(bytes.subspan(mark));
}

bool PropertyListCodec::isBinary(std::span<const std::uint8_t> bytes) {
    return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size())
        .starts_with("bplist0");
}

Bytes PropertyListCodec::writeBinary(const PropertyList& root) {
    BinaryPropertyListWriter writer;
    return writer.finish(writer.value(root));
}

} // namespace vantor
