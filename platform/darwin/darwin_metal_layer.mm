#include "platform/darwin/darwin_layers.h"
#include "platform/darwin/foundation.h"
#include "platform/darwin/metal_device.h"

#import <QuartzCore/QuartzCore.h>

namespace vantor::darwin {
namespace {

/// CAMetalLayer.
class DarwinMetalLayer : public MetalLayer, public DarwinLayer {
  public:
    explicit DarwinMetalLayer(CAMetalLayer* layer) : DarwinLayer(nativeRef(layer)), layer_(layer) {}

    void setDevice(std::shared_ptr<gpu::Device> device) override {
        layer_.device =
            device
                ? darwin::native<id<MTLDevice>>(static_cast<const MetalDevice&>(*device).native())
                : nil;
    }
    void setPixelFormat(gpu::PixelFormat format) override {
        layer_.pixelFormat = static_cast<MTLPixelFormat>(format);
    }
    void setFramebufferOnly(bool only) override { layer_.framebufferOnly = only; }
    void setOpaque(bool opaque) override { layer_.opaque = opaque; }
    void setMaximumDrawableCount(int count) override {
        layer_.maximumDrawableCount = static_cast<NSUInteger>(count);
    }
    void setDrawableSize(const Size& size) override {
        layer_.drawableSize = CGSizeMake(size.width, size.height);
    }
    Size drawableSize() const override {
        const CGSize size = layer_.drawableSize;
        return {.width = size.width, .height = size.height};
    }
    gpu::DrawableRef nextDrawable() override {
        id<CAMetalDrawable> drawable = [layer_ nextDrawable];
        if (drawable == nil) {
            return nullptr;
        }
        return gpu::DrawableRef(
            new MetalDrawable(nativeRef(drawable), nativeRef(drawable.texture)));
    }

  private:
    CAMetalLayer* layer_;
};

} // namespace

std::shared_ptr<MetalLayer> DarwinLayers::makeMetalLayer() {
    return std::make_shared<DarwinMetalLayer>([CAMetalLayer layer]);
}

} // namespace vantor::darwin
