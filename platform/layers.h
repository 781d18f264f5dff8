#pragma once
// Layer trees and transactions. Main thread only.
//   Linux: own layer tree, committed to the hosting agent on every flush; drawables are exportable
//   Vulkan images, at most two per layer.
//   macOS: CALayer, CAMetalLayer, CATransaction. The remote layer context is the runtime class
//   "CAContext" on both (see object_runtime.h): class method "remoteContextWithOptions:" with the
//   option "displayId", property "contextId", methods "setLayer:" and "invalidate".

#include "platform/geometry.h"
#include "platform/gpu.h"
#include "platform/images.h"
#include "platform/object_runtime.h"

#include <memory>
#include <optional>

namespace vantor {

class Layer;
class MetalLayer;
using LayerRef = std::shared_ptr<Layer>;

enum class ContentsGravity { resize, resizeAspectFill };

/// A rectangle of the tree. An object of the runtime, so that it can be handed to a remote context.
/// A layer is kept by its superlayer and by whoever holds it.
class Layer : public Object {
  public:
    /// In the superlayer's coordinates, points.
    virtual Rect frame() const = 0;
    virtual void setFrame(const Rect& frame) = 0;
    /// Origin (0, 0) and the frame's size.
    Rect bounds() const { return {.origin = {}, .size = frame().size}; }

    /// Pixels per point.
    virtual double contentsScale() const = 0;
    virtual void setContentsScale(double scale) = 0;

    /// Nothing is transparent.
    virtual std::optional<Color> backgroundColor() const = 0;
    virtual void setBackgroundColor(std::optional<Color> color) = 0;

    virtual void setContents(std::shared_ptr<const Image> image) = 0;
    virtual void setContentsGravity(ContentsGravity gravity) = 0;
    virtual void setMasksToBounds(bool masks) = 0;

    /// On top of the others; a layer that has another superlayer leaves it.
    virtual void addSublayer(const LayerRef& layer) = 0;
    virtual void removeFromSuperlayer() = 0;
};

/// A layer that shows what the GPU draws. A plain layer until it has a device.
class MetalLayer : public virtual Layer {
  public:
    virtual void setDevice(std::shared_ptr<gpu::Device> device) = 0;
    virtual void setPixelFormat(gpu::PixelFormat format) = 0;
    virtual void setFramebufferOnly(bool only) = 0;
    virtual void setOpaque(bool opaque) = 0;
    /// 2 or 3.
    virtual void setMaximumDrawableCount(int count) = 0;
    /// In pixels. Takes effect from the next drawable on.
    virtual void setDrawableSize(const Size& size) = 0;
    virtual Size drawableSize() const = 0;
    /// Null at once while all drawables are in use, when the size holds no pixel, or when the
    /// device cannot make one. Never waits.
    virtual gpu::DrawableRef nextDrawable() = 0;
};

/// Groups changes so that they are seen together. Transactions nest; what is changed outside one
/// belongs to an implicit transaction that ends with the turn of the run loop, or with `flush`.
class LayerTransactions {
  public:
    virtual ~LayerTransactions() = default;
    virtual void begin() = 0;
    /// No implicit animations for this transaction.
    virtual void setDisableActions(bool disable) = 0;
    virtual void commit() = 0;
    /// Sends what is committed to whoever hosts the trees, now.
    virtual void flush() = 0;
};

class Layers {
  public:
    virtual ~Layers() = default;
    virtual LayerRef makeLayer() = 0;
    virtual std::shared_ptr<MetalLayer> makeMetalLayer() = 0;
    virtual LayerTransactions& transactions() = 0;
};

/// A transaction without implicit animations for as long as this lives.
class UnanimatedTransaction {
  public:
    explicit UnanimatedTransaction(LayerTransactions& transactions) : transactions_(transactions) {
        transactions_.begin();
        transactions_.setDisableActions(true);
    }
    ~UnanimatedTransaction() { transactions_.commit(); }
    UnanimatedTransaction(const UnanimatedTransaction&) = delete;
    UnanimatedTransaction& operator=(const UnanimatedTransaction&) = delete;

  private:
    LayerTransactions& transactions_;
};

} // namespace vantor
