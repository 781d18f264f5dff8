#pragma once

#include "platform/darwin/metal_device.h"
#include "platform/darwin/native_ref.h"
#include "platform/gpu.h"

#include <memory>

namespace vantor::darwin {

/// Over an MTLCommandQueue.
std::shared_ptr<gpu::CommandQueue> makeMetalQueue(NativeRef queue);

/// MTLDrawable with its texture. Given back, it is released, and so is free for its layer.
class MetalDrawable : public gpu::Drawable {
  public:
    MetalDrawable(NativeRef drawable, NativeRef texture)
        : drawable_(std::move(drawable)), texture_(std::move(texture)) {}

    const NativeRef& native() const { return drawable_; }
    gpu::Texture& texture() override { return texture_; }

  private:
    void giveBack() override { delete this; }

    NativeRef drawable_;
    MetalTexture texture_;
};

} // namespace vantor::darwin
