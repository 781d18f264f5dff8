#pragma once
// What the project uses of Core Graphics. Each group names the documentation page that its facts
// are from.

#include <CoreFoundation/CoreFoundation.h>
#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

// Pages: "CGFloat", "CGPoint", "CGSize", "CGRect", "CGRectMake", "CGSizeMake"
typedef double CGFloat;
struct CGPoint {
    CGFloat x;
    CGFloat y;
};
typedef struct CGPoint CGPoint;
struct CGSize {
    CGFloat width;
    CGFloat height;
};
typedef struct CGSize CGSize;
struct CGRect {
    CGPoint origin;
    CGSize size;
};
typedef struct CGRect CGRect;
static inline CGRect CGRectMake(CGFloat x, CGFloat y, CGFloat width, CGFloat height) {
    CGRect rect = {{x, y}, {width, height}};
    return rect;
}
static inline CGSize CGSizeMake(CGFloat width, CGFloat height) {
    CGSize size = {width, height};
    return size;
}

// Pages: "CGColor", "CGColorCreateGenericGray", "CGColorCreateGenericRGB",
// "CGColorGetNumberOfComponents", "CGColorGetComponents", "CGColorRelease"
typedef struct CGColor* CGColorRef;
CGColorRef CGColorCreateGenericGray(CGFloat gray, CGFloat alpha);
CGColorRef CGColorCreateGenericRGB(CGFloat red, CGFloat green, CGFloat blue, CGFloat alpha);
size_t CGColorGetNumberOfComponents(CGColorRef color);
const CGFloat* CGColorGetComponents(CGColorRef color);
void CGColorRelease(CGColorRef color);

// Pages: "CGColorSpace", "CGColorSpaceCreateDeviceRGB", "CGColorSpaceRelease"
typedef struct CGColorSpace* CGColorSpaceRef;
CGColorSpaceRef CGColorSpaceCreateDeviceRGB(void);
void CGColorSpaceRelease(CGColorSpaceRef space);

// Pages: "CGDataProvider", "CGDataProviderCreateWithCFData", "CGDataProviderRelease"
typedef struct CGDataProvider* CGDataProviderRef;
CGDataProviderRef CGDataProviderCreateWithCFData(CFDataRef data);
void CGDataProviderRelease(CGDataProviderRef provider);

// Pages: "CGImage", "CGImageAlphaInfo", "CGBitmapInfo", "CGImageByteOrderInfo",
// "CGColorRenderingIntent", "CGImageCreate"
typedef struct CGImage* CGImageRef;
typedef enum CGImageAlphaInfo : uint32_t {
    kCGImageAlphaNoneSkipFirst = 6,
} CGImageAlphaInfo;
typedef enum CGBitmapInfo : uint32_t {
    kCGBitmapByteOrder32Little = 2 << 12,
} CGBitmapInfo;
typedef enum CGColorRenderingIntent : int32_t {
    kCGRenderingIntentDefault = 0,
} CGColorRenderingIntent;
CGImageRef CGImageCreate(size_t width, size_t height, size_t bitsPerComponent, size_t bitsPerPixel,
                         size_t bytesPerRow, CGColorSpaceRef space, CGBitmapInfo bitmapInfo,
                         CGDataProviderRef provider, const CGFloat* decode, bool shouldInterpolate,
                         CGColorRenderingIntent intent);
void CGImageRelease(CGImageRef image);
size_t CGImageGetWidth(CGImageRef image);
size_t CGImageGetHeight(CGImageRef image);

#ifdef __cplusplus
}
#endif
