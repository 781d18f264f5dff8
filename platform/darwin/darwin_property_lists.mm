#include "platform/darwin/darwin_system.h"

#include "platform/darwin/foundation.h"

#include <cstdio>
#include <cstdlib>

namespace vantor::darwin {
namespace {

constexpr std::size_t kMaxEncodedBytes = std::size_t{16} << 20;

} // namespace

Result<PropertyList> DarwinPropertyLists::read(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > kMaxEncodedBytes) {
        return Failure{cocoaError(kPropertyListReadCorrupt, "a property list of " +
                                                                std::to_string(bytes.size()) +
                                                                " bytes exceeds the limit of " +
                                                                std::to_string(kMaxEncodedBytes))};
    }
    NSError* error = nil;
    id graph = [NSPropertyListSerialization propertyListWithData:nsData(bytes)
                                                         options:NSPropertyListImmutable
                                                          format:nullptr
                                                           error:&error];
    return graph != nil ? propertyListOf(graph) : Failure{errorOf(error)};
}

Bytes DarwinPropertyLists::writeBinary(const PropertyList& root) {
    id graph = foundationGraph(root);
    NSData* data = graph != nil ? [NSPropertyListSerialization
                                      dataWithPropertyList:graph
                                                    format:NSPropertyListBinaryFormat_v1_0
                                                   options:0
                                                     error:nullptr]
                                : nil;
    if (data == nil) {
        std::fputs("a property list holds what none can\n", stderr);
        std::abort();
    }
    return bytesOf(data);
}

} // namespace vantor::darwin
