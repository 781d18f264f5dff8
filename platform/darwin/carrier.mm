#include "platform/darwin/darwin_object_runtime.h"

#import <Foundation/Foundation.h>

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

NativeRef makeCarrier(std::function<void(const void* archiver)> encodeBody) {
    VantorXPCCarrier* carrier = [[VantorXPCCarrier alloc] initWithEncodeBody:std::move(encodeBody)];
    return NativeRef((__bridge const void*)carrier);
}

} // namespace vantor::darwin
