#pragma once
// What the project uses of Core Animation. Each group names the documentation page that its facts
// are from.

#include <CoreGraphics/CoreGraphics.h>
#include <Foundation/Foundation.h>
#include <Metal/Metal.h>

// Pages: "CACurrentMediaTime()", "CALayerContentsGravity"
extern "C" double CACurrentMediaTime(void);
typedef NSString* CALayerContentsGravity;
extern "C" CALayerContentsGravity const kCAGravityResize;
extern "C" CALayerContentsGravity const kCAGravityResizeAspectFill;

// Page: "CALayer"
@interface CALayer : NSObject
+ (instancetype)layer;
@property CGRect frame;
@property CGFloat contentsScale;
@property CGColorRef backgroundColor;
@property(strong) id contents;
@property(copy) CALayerContentsGravity contentsGravity;
@property BOOL masksToBounds;
@property(getter=isOpaque) BOOL opaque;
- (void)addSublayer:(CALayer*)layer;
- (void)removeFromSuperlayer;
@end

// Pages: "CAMetalLayer", "CAMetalDrawable"
@protocol CAMetalDrawable <MTLDrawable>
@property(readonly) id<MTLTexture> texture;
@end
@interface CAMetalLayer : CALayer
@property(strong) id<MTLDevice> device;
@property MTLPixelFormat pixelFormat;
@property BOOL framebufferOnly;
@property CGSize drawableSize;
@property NSUInteger maximumDrawableCount;
- (id<CAMetalDrawable>)nextDrawable;
@end

// Page: "CATransaction"
@interface CATransaction : NSObject
+ (void)begin;
+ (void)commit;
+ (void)flush;
+ (void)setDisableActions:(BOOL)flag;
@end

// Pages: "CAFrameRateRange", "CAFrameRateRangeMake", "CADisplayLink"
typedef struct CAFrameRateRange {
    float minimum;
    float maximum;
    float preferred;
} CAFrameRateRange;
extern "C" CAFrameRateRange CAFrameRateRangeMake(float minimum, float maximum, float preferred);
@interface CADisplayLink : NSObject
@property(getter=isPaused, nonatomic) BOOL paused;
@property(nonatomic) CAFrameRateRange preferredFrameRateRange;
- (void)addToRunLoop:(NSRunLoop*)runloop forMode:(NSRunLoopMode)mode;
- (void)invalidate;
@end
