#pragma once
// What the project uses of Uniform Type Identifiers. Pages: "UTType", "png".

#include <Foundation/Foundation.h>

@interface UTType : NSObject
@property(readonly) NSString* identifier;
@end
extern "C" UTType* const UTTypePNG;
