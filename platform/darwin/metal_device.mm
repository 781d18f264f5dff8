#include "platform/darwin/metal_device.h"

#include "platform/darwin/foundation.h"

#import <Metal/Metal.h>

namespace vantor::darwin {
namespace {

/// The seam's numbers are Metal's.
template <typename Seam, typename Metal>
constexpr bool agree(Seam seam, Metal metal, NSUInteger number) {
    return static_cast<NSUInteger>(seam) == number && static_cast<NSUInteger>(metal) == number;
}
static_assert(agree(gpu::PixelFormat::r32Float, MTLPixelFormatR32Float, 55));
static_assert(agree(gpu::PixelFormat::bgra8Unorm, MTLPixelFormatBGRA8Unorm, 80));
static_assert(agree(gpu::TextureUsage::shaderRead, MTLTextureUsageShaderRead, 1));
static_assert(agree(gpu::TextureUsage::renderTarget, MTLTextureUsageRenderTarget, 4));
static_assert(agree(gpu::StorageMode::shared, MTLStorageModeShared, 0));
static_assert(agree(gpu::LoadAction::dontCare, MTLLoadActionDontCare, 0));
static_assert(agree(gpu::LoadAction::load, MTLLoadActionLoad, 1));
static_assert(agree(gpu::LoadAction::clear, MTLLoadActionClear, 2));
static_assert(agree(gpu::StoreAction::dontCare, MTLStoreActionDontCare, 0));
static_assert(agree(gpu::StoreAction::store, MTLStoreActionStore, 1));
static_assert(agree(gpu::PrimitiveType::triangle, MTLPrimitiveTypeTriangle, 3));

/// The largest side of a 2-D texture on every GPU of a Mac (Metal Feature Set Tables).
constexpr std::uint64_t kMaxTextureSide = 16384;

class MetalLibrary : public gpu::Library {
  public:
    explicit MetalLibrary(id<MTLLibrary> library) : library_(library) {}

    std::shared_ptr<gpu::Function> newFunction(std::string_view name) override {
        id<MTLFunction> function = [library_ newFunctionWithName:nsString(name)];
        return function != nil ? std::make_shared<MetalFunction>(nativeRef(function)) : nullptr;
    }

  private:
    id<MTLLibrary> library_;
};

id<MTLFunction> metalFunction(const std::shared_ptr<gpu::Function>& function) {
    return function ? native<id<MTLFunction>>(static_cast<const MetalFunction&>(*function).native())
                    : nil;
}

MTLRegion metalRegion(const gpu::Region& region) {
    return MTLRegionMake2D(region.x, region.y, region.width, region.height);
}

} // namespace

std::uint64_t MetalTexture::width() const { return darwin::native<id<MTLTexture>>(texture_).width; }

std::uint64_t MetalTexture::height() const {
    return darwin::native<id<MTLTexture>>(texture_).height;
}

gpu::PixelFormat MetalTexture::pixelFormat() const {
    return static_cast<gpu::PixelFormat>(darwin::native<id<MTLTexture>>(texture_).pixelFormat);
}

void MetalTexture::getBytesImpl(std::span<std::uint8_t> bytes, std::size_t bytesPerRow,
                                const gpu::Region& region) const {
    [darwin::native<id<MTLTexture>>(texture_) getBytes:bytes.data()
                                           bytesPerRow:bytesPerRow
                                            fromRegion:metalRegion(region)
                                           mipmapLevel:0];
}

void MetalTexture::replaceRegionImpl(const gpu::Region& region, std::span<const std::uint8_t> bytes,
                                     std::size_t bytesPerRow) {
    [darwin::native<id<MTLTexture>>(texture_) replaceRegion:metalRegion(region)
                                                mipmapLevel:0
                                                  withBytes:bytes.data()
                                                bytesPerRow:bytesPerRow];
}

std::uint64_t MetalDevice::registryID() const {
    return darwin::native<id<MTLDevice>>(device_).registryID;
}

std::shared_ptr<gpu::CommandQueue> MetalDevice::newCommandQueue() {
    id<MTLCommandQueue> queue = [darwin::native<id<MTLDevice>>(device_) newCommandQueue];
    return queue != nil ? makeMetalQueue(nativeRef(queue)) : nullptr;
}

Result<std::shared_ptr<gpu::Library>> MetalDevice::newLibrary(std::string_view source) {
    NSError* error = nil;
    id<MTLLibrary> library =
        [darwin::native<id<MTLDevice>>(device_) newLibraryWithSource:nsString(source)
                                                             options:nil
                                                               error:&error];
    if (library == nil) {
        return Failure{errorOf(error)};
    }
    return std::shared_ptr<gpu::Library>(std::make_shared<MetalLibrary>(library));
}

Result<std::shared_ptr<gpu::RenderPipelineState>>
MetalDevice::newRenderPipelineState(const gpu::RenderPipelineDescriptor& descriptor) {
    // Metal takes a descriptor without a fragment function for a pass that draws no colour.
    if (!descriptor.vertexFunction || !descriptor.fragmentFunction) {
        return Failure{Error{.domain = "MTLLibraryErrorDomain",
                             .code = MTLLibraryErrorFunctionNotFound,
                             .message = descriptor.vertexFunction ? "no fragment function is set"
                                                                  : "no vertex function is set"}};
    }
    MTLRenderPipelineDescriptor* wanted = [[MTLRenderPipelineDescriptor alloc] init];
    wanted.vertexFunction = metalFunction(descriptor.vertexFunction);
    wanted.fragmentFunction = metalFunction(descriptor.fragmentFunction);
    wanted.colorAttachments[0].pixelFormat =
        static_cast<MTLPixelFormat>(descriptor.colorPixelFormat);
    NSError* error = nil;
    id<MTLRenderPipelineState> state =
        [darwin::native<id<MTLDevice>>(device_) newRenderPipelineStateWithDescriptor:wanted
                                                                               error:&error];
    if (state == nil) {
        return Failure{errorOf(error)};
    }
    return std::shared_ptr<gpu::RenderPipelineState>(
        std::make_shared<MetalPipeline>(nativeRef(state)));
}

std::shared_ptr<gpu::Texture> MetalDevice::newTexture(const gpu::TextureDescriptor& descriptor) {
    // Metal stops a process that asks for such a texture.
    if (descriptor.width == 0 || descriptor.height == 0 || descriptor.width > kMaxTextureSide ||
        descriptor.height > kMaxTextureSide) {
        return nullptr;
    }
    MTLTextureDescriptor* wanted = [MTLTextureDescriptor
        texture2DDescriptorWithPixelFormat:static_cast<MTLPixelFormat>(descriptor.pixelFormat)
                                     width:descriptor.width
                                    height:descriptor.height
                                 mipmapped:NO];
    wanted.usage = static_cast<MTLTextureUsage>(descriptor.usage);
    wanted.storageMode = static_cast<MTLStorageMode>(descriptor.storageMode);
    id<MTLTexture> texture =
        [darwin::native<id<MTLDevice>>(device_) newTextureWithDescriptor:wanted];
    return texture != nil ? std::make_shared<MetalTexture>(nativeRef(texture)) : nullptr;
}

std::shared_ptr<gpu::Device> MetalSystem::createSystemDefaultDevice() {
    if (!device_) {
        id<MTLDevice> device = MTLCreateSystemDefaultDevice();
        device_ = device != nil ? std::make_shared<MetalDevice>(nativeRef(device)) : nullptr;
    }
    return device_;
}

} // namespace vantor::darwin
