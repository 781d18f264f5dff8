#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/darwin_system.h"
#include "platform/darwin/foundation.h"

#include <cstdio>
#include <cstdlib>

/// Stands in an archive where an instance of one of the agent's classes will be read. Never decoded
/// as itself.
@interface VantorXPCCarrier : NSObject <NSSecureCoding> {
    std::function<void(const void*)> _encodeBody;
}
- (instancetype)init __attribute__((unavailable("a carrier exists with a body only")));
- (instancetype)initWithEncodeBody:(std::function<void(const void*)>)encodeBody;
@end

@implementation VantorXPCCarrier

+ (BOOL)supportsSecureCoding {
    return YES;
}

- (instancetype)init {
    std::fputs("Fatal error: Use of unimplemented initializer 'init()' for class "
               "'VantorLockScreen.Carrier'\n",
               stderr);
    std::abort();
}

- (instancetype)initWithEncodeBody:(std::function<void(const void*)>)encodeBody {
    if ((self = [super init])) {
        _encodeBody = std::move(encodeBody);
    }
    return self;
}

- (instancetype)initWithCoder:(NSCoder*)coder {
    static_cast<void>(coder);
    return nil;
}

- (void)encodeWithCoder:(NSCoder*)coder {
    if ([coder isKindOfClass:[NSKeyedArchiver class]]) {
        _encodeBody((__bridge const void*)coder);
    }
}

@end

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

NativeRef makeCarrier(std::function<void(const void* archiver)> encodeBody) {
    VantorXPCCarrier* carrier = [[VantorXPCCarrier alloc] initWithEncodeBody:std::move(encodeBody)];
    return NativeRef((__bridge const void*)carrier);
}

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
