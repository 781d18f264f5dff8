#pragma once
// What the project uses of Metal. Each group names the documentation page that its facts are from.

#include <Foundation/Foundation.h>

// Pages: "MTLPixelFormat", "MTLTextureUsage", "MTLStorageMode", "MTLLoadAction", "MTLStoreAction",
// "MTLPrimitiveType", "MTLCommandBufferStatus"
typedef NS_ENUM(NSUInteger, MTLPixelFormat) {
    MTLPixelFormatInvalid = 0,
    MTLPixelFormatR32Float = 55,
    MTLPixelFormatBGRA8Unorm = 80,
};
typedef NS_OPTIONS(NSUInteger, MTLTextureUsage) {
    MTLTextureUsageShaderRead = 0x0001,
    MTLTextureUsageRenderTarget = 0x0004,
};
typedef NS_ENUM(NSUInteger, MTLStorageMode) { MTLStorageModeShared = 0 };
typedef NS_ENUM(NSUInteger, MTLLoadAction) {
    MTLLoadActionDontCare = 0,
    MTLLoadActionLoad = 1,
    MTLLoadActionClear = 2,
};
typedef NS_ENUM(NSUInteger, MTLStoreAction) { MTLStoreActionDontCare = 0, MTLStoreActionStore = 1 };
typedef NS_ENUM(NSUInteger, MTLPrimitiveType) { MTLPrimitiveTypeTriangle = 3 };
typedef NS_ENUM(NSUInteger, MTLCommandBufferStatus) {
    MTLCommandBufferStatusCompleted = 4,
    MTLCommandBufferStatusError = 5,
};

// Pages: "MTLClearColor", "MTLClearColorMake(_:_:_:_:)", "MTLRegion", "MTLRegionMake2D(_:_:_:_:)"
typedef struct {
    double red;
    double green;
    double blue;
    double alpha;
} MTLClearColor;
static inline MTLClearColor MTLClearColorMake(double red, double green, double blue, double alpha) {
    return {red, green, blue, alpha};
}
typedef struct {
    NSUInteger x, y, z;
} MTLOrigin;
typedef struct {
    NSUInteger width, height, depth;
} MTLSize;
typedef struct {
    MTLOrigin origin;
    MTLSize size;
} MTLRegion;
static inline MTLRegion MTLRegionMake2D(NSUInteger x, NSUInteger y, NSUInteger width,
                                        NSUInteger height) {
    return {{x, y, 0}, {width, height, 1}};
}

// Page: "MTLTextureDescriptor"
@interface MTLTextureDescriptor : NSObject
+ (MTLTextureDescriptor*)texture2DDescriptorWithPixelFormat:(MTLPixelFormat)pixelFormat
                                                      width:(NSUInteger)width
                                                     height:(NSUInteger)height
                                                  mipmapped:(BOOL)mipmapped;
@property(nonatomic) MTLTextureUsage usage;
@property(nonatomic) MTLStorageMode storageMode;
@end

// Page: "MTLTexture"
@protocol MTLTexture <NSObject>
@property(readonly) NSUInteger width;
@property(readonly) NSUInteger height;
@property(readonly) MTLPixelFormat pixelFormat;
- (void)getBytes:(void*)pixelBytes
     bytesPerRow:(NSUInteger)bytesPerRow
      fromRegion:(MTLRegion)region
     mipmapLevel:(NSUInteger)level;
- (void)replaceRegion:(MTLRegion)region
          mipmapLevel:(NSUInteger)level
            withBytes:(const void*)pixelBytes
          bytesPerRow:(NSUInteger)bytesPerRow;
@end

// Pages: "MTLDrawable", "CAMetalDrawable"
@protocol MTLDrawable <NSObject>
@end

// Pages: "MTLFunction", "MTLLibrary", "MTLCompileOptions", "MTLLibraryError.Code"
typedef NS_ENUM(NSUInteger, MTLLibraryError) { MTLLibraryErrorFunctionNotFound = 5 };
@protocol MTLFunction <NSObject>
@end
@protocol MTLLibrary <NSObject>
- (id<MTLFunction>)newFunctionWithName:(NSString*)functionName;
@end
@class MTLCompileOptions;

// Pages: "MTLRenderPipelineColorAttachmentDescriptor", "MTLRenderPipelineDescriptor",
// "MTLRenderPipelineState"
@interface MTLRenderPipelineColorAttachmentDescriptor : NSObject
@property(nonatomic) MTLPixelFormat pixelFormat;
@end
@interface MTLRenderPipelineColorAttachmentDescriptorArray : NSObject
- (MTLRenderPipelineColorAttachmentDescriptor*)objectAtIndexedSubscript:(NSUInteger)index;
@end
@interface MTLRenderPipelineDescriptor : NSObject
@property(nonatomic, strong) id<MTLFunction> vertexFunction;
@property(nonatomic, strong) id<MTLFunction> fragmentFunction;
@property(readonly) MTLRenderPipelineColorAttachmentDescriptorArray* colorAttachments;
@end
@protocol MTLRenderPipelineState <NSObject>
@end

// Pages: "MTLRenderPassColorAttachmentDescriptor", "MTLRenderPassDescriptor"
@interface MTLRenderPassColorAttachmentDescriptor : NSObject
@property(nonatomic, strong) id<MTLTexture> texture;
@property(nonatomic) MTLLoadAction loadAction;
@property(nonatomic) MTLStoreAction storeAction;
@property(nonatomic) MTLClearColor clearColor;
@end
@interface MTLRenderPassColorAttachmentDescriptorArray : NSObject
- (MTLRenderPassColorAttachmentDescriptor*)objectAtIndexedSubscript:(NSUInteger)index;
@end
@interface MTLRenderPassDescriptor : NSObject
+ (MTLRenderPassDescriptor*)renderPassDescriptor;
@property(readonly) MTLRenderPassColorAttachmentDescriptorArray* colorAttachments;
@end

// Pages: "MTLCommandEncoder", "MTLRenderCommandEncoder"
@protocol MTLCommandEncoder <NSObject>
- (void)endEncoding;
@end
@protocol MTLRenderCommandEncoder <MTLCommandEncoder>
- (void)setRenderPipelineState:(id<MTLRenderPipelineState>)pipelineState;
- (void)setFragmentBytes:(const void*)bytes length:(NSUInteger)length atIndex:(NSUInteger)index;
- (void)setFragmentTexture:(id<MTLTexture>)texture atIndex:(NSUInteger)index;
- (void)drawPrimitives:(MTLPrimitiveType)primitiveType
           vertexStart:(NSUInteger)vertexStart
           vertexCount:(NSUInteger)vertexCount;
@end

// Pages: "MTLCommandBuffer", "MTLCommandQueue"
@protocol MTLCommandBuffer <NSObject>
@property(readonly) MTLCommandBufferStatus status;
- (id<MTLRenderCommandEncoder>)renderCommandEncoderWithDescriptor:
    (MTLRenderPassDescriptor*)renderPassDescriptor;
- (void)presentDrawable:(id<MTLDrawable>)drawable;
- (void)commit;
- (void)waitUntilCompleted;
@end
@protocol MTLCommandQueue <NSObject>
- (id<MTLCommandBuffer>)commandBuffer;
@end

// Pages: "MTLDevice", "MTLCreateSystemDefaultDevice"
@protocol MTLDevice <NSObject>
@property(readonly) uint64_t registryID;
- (id<MTLCommandQueue>)newCommandQueue;
- (id<MTLLibrary>)newLibraryWithSource:(NSString*)source
                               options:(MTLCompileOptions*)options
                                 error:(NSError**)error;
- (id<MTLRenderPipelineState>)newRenderPipelineStateWithDescriptor:
                                  (MTLRenderPipelineDescriptor*)descriptor
                                                             error:(NSError**)error;
- (id<MTLTexture>)newTextureWithDescriptor:(MTLTextureDescriptor*)descriptor;
@end
extern "C" id<MTLDevice> MTLCreateSystemDefaultDevice(void) NS_RETURNS_RETAINED;
