#pragma once
// What the project uses of Image I/O. Each group names the documentation page that its facts are
// from.

#include <CoreGraphics/CoreGraphics.h>

#ifdef __cplusplus
extern "C" {
#endif

// Pages: "CGImageDestinationCreateWithURL", "CGImageDestinationAddImage",
// "CGImageDestinationFinalize"
typedef struct CGImageDestination* CGImageDestinationRef;
CGImageDestinationRef CGImageDestinationCreateWithURL(CFURLRef url, CFStringRef type, size_t count,
                                                      CFDictionaryRef options);
void CGImageDestinationAddImage(CGImageDestinationRef destination, CGImageRef image,
                                CFDictionaryRef properties);
bool CGImageDestinationFinalize(CGImageDestinationRef destination);

// Pages: "CGImageSourceCreateWithURL", "CGImageSourceCreateImageAtIndex"
typedef struct CGImageSource* CGImageSourceRef;
CGImageSourceRef CGImageSourceCreateWithURL(CFURLRef url, CFDictionaryRef options);
CGImageRef CGImageSourceCreateImageAtIndex(CGImageSourceRef source, size_t index,
                                           CFDictionaryRef options);

#ifdef __cplusplus
}
#endif
