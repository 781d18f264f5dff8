#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/darwin_system.h"
#include "platform/darwin/foundation.h"

namespace vantor::darwin {
namespace {

class ArchiverEncoder : public KeyedEncoder {
  public:
    explicit ArchiverEncoder(NSKeyedArchiver* archiver) : archiver_(archiver) {}

    Result<Done> encodeEncodable(const PropertyList& graph, std::string_view key) override {
        id object = foundationGraph(graph);
        if (object == nil) {
            return Failure{cocoaError(kCoderInvalidValue, "the record for the key \"" +
                                                              std::string(key) +
                                                              "\" holds what no graph can")};
        }
        [archiver_ encodeObject:object forKey:nsString(key)];
        return Done{};
    }

  private:
    NSKeyedArchiver* archiver_;
};

} // namespace

Result<Bytes>
DarwinKeyedArchiving::archiveRootObject(std::string_view className,
                                        const std::function<void(KeyedEncoder&)>& encode) {
    if (className != kCarrierClassName) {
        return Failure{cocoaError(kCoderInvalidValue, "the class name \"" + std::string(className) +
                                                          "\" is not the carrier's")};
    }
    const NativeRef carrier = makeCarrier([&encode](const void* archiver) {
        ArchiverEncoder encoder((__bridge NSKeyedArchiver*)archiver);
        encode(encoder);
    });
    NSError* error = nil;
    NSData* archive = [NSKeyedArchiver archivedDataWithRootObject:native<id>(carrier)
                                            requiringSecureCoding:NO
                                                            error:&error];
    return archive != nil ? Result<Bytes>(bytesOf(archive)) : Failure{errorOf(error)};
}

} // namespace vantor::darwin
