#pragma once
// Layer trees that tests look into, and what was done to them in which order.

#include "platform/layers.h"
#include "tests/support/fake_contract.h"
#include "tests/support/fake_gpu.h"
#include "tests/support/fake_objects.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

namespace vantor {

class FakeLayers;

/// The state of the transactions, shared by all layers.
class FakeTransactions : public LayerTransactions {
  public:
    void begin() override;
    void setDisableActions(bool disable) override;
    void commit() override;
    void flush() override;

    bool isAnimating() const { return disabled_.empty() || !disabled_.back(); }
    std::size_t depth() const { return disabled_.size(); }

    int committed = 0;
    int flushed = 0;

  private:
    MainThreadCheck mainThread_;
    std::vector<bool> disabled_;
};

class FakeLayer : public virtual Layer {
  public:
    explicit FakeLayer(FakeLayers& owner) : owner_(owner) {}
    ~FakeLayer() override;

    const ObjectClass& objectClass() const override;
    Rect frame() const override { return frame_; }
    void setFrame(const Rect& frame) override;
    double contentsScale() const override { return contentsScale_; }
    void setContentsScale(double scale) override;
    std::optional<Color> backgroundColor() const override { return backgroundColor_; }
    void setBackgroundColor(std::optional<Color> color) override { backgroundColor_ = color; }
    void setContents(std::shared_ptr<const Image> image) override { contents = std::move(image); }
    void setContentsGravity(ContentsGravity given) override { gravity = given; }
    void setMasksToBounds(bool masks) override { masksToBounds = masks; }
    void addSublayer(const LayerRef& layer) override;
    void removeFromSuperlayer() override;

    FakeLayer* superlayer() const { return superlayer_; }
    const std::vector<LayerRef>& sublayers() const { return sublayers_; }

    std::shared_ptr<const Image> contents;
    ContentsGravity gravity = ContentsGravity::resize;
    bool masksToBounds = false;
    /// Changes of frame, scale or drawable size that would have been animated.
    int animatedChanges = 0;

  protected:
    void noteChange();
    FakeLayers& owner() { return owner_; }

  private:
    FakeLayers& owner_;
    Rect frame_;
    double contentsScale_ = 1;
    std::optional<Color> backgroundColor_;
    /// Whoever keeps this layer.
    FakeLayer* superlayer_ = nullptr;
    std::vector<LayerRef> sublayers_;
};

class FakeMetalLayer : public MetalLayer, public FakeLayer {
  public:
    explicit FakeMetalLayer(FakeLayers& owner);
    ~FakeMetalLayer() override;

    const ObjectClass& objectClass() const override;
    void setDevice(std::shared_ptr<gpu::Device> given) override { device = std::move(given); }
    void setPixelFormat(gpu::PixelFormat format) override { pixelFormat = format; }
    void setFramebufferOnly(bool only) override { framebufferOnly = only; }
    void setOpaque(bool given) override { opaque = given; }
    void setMaximumDrawableCount(int count) override;
    void setDrawableSize(const Size& size) override;
    Size drawableSize() const override { return drawableSize_; }
    gpu::DrawableRef nextDrawable() override;

    /// Whoever hosts the layer has composited what was presented and gives it back. Happens by
    /// itself unless `hostIsSlow`.
    void composite();

    std::shared_ptr<gpu::Device> device;
    gpu::PixelFormat pixelFormat = gpu::PixelFormat::invalid;
    bool framebufferOnly = false;
    bool opaque = false;
    int maximumDrawableCount = 3;
    /// No drawable is handed out while set.
    bool refusesDrawables = false;
    /// Presented drawables stay in use until `composite`.
    bool hostIsSlow = false;
    /// Drawables that were shown.
    int presented = 0;

  private:
    class PooledDrawable;
    struct Pool;

    Size drawableSize_;
    std::shared_ptr<Pool> pool_;
};

/// Layers used after the fake has gone stop the program.
class FakeLayers : public Layers {
  public:
    FakeLayers();
    ~FakeLayers() override;

    LayerRef makeLayer() override;
    std::shared_ptr<MetalLayer> makeMetalLayer() override;
    FakeTransactions& transactions() override { return transactions_; }

    void requireMainThread() const { mainThread_.require("layers are used on the main thread"); }
    const FakeObjectClass& layerClass() const { return layerClass_; }
    const FakeObjectClass& metalLayerClass() const { return metalLayerClass_; }

    /// All that are alive, in the order of their making.
    std::vector<FakeLayer*> alive;
    /// The latest Metal layer that is alive, or null.
    FakeMetalLayer* lastMetalLayer() const;

  private:
    MainThreadCheck mainThread_;
    FakeObjectClass layerClass_{"CALayer"};
    FakeObjectClass metalLayerClass_{"CAMetalLayer"};
    FakeTransactions transactions_;
};

/// The layer as tests see it.
FakeLayer& fake(const LayerRef& layer);
/// The only sublayer, a Metal layer.
FakeMetalLayer& onlyMetalSublayer(const LayerRef& layer);

} // namespace vantor
