#pragma once

#include "platform/darwin/native_ref.h"
#include "platform/layers.h"

namespace vantor::darwin {

/// CALayer.
class DarwinLayer : public virtual Layer, public NativeHolder {
  public:
    explicit DarwinLayer(NativeRef layer) : layer_(std::move(layer)) {}

    const NativeRef& native() const override { return layer_; }
    const ObjectClass& objectClass() const override;
    Rect frame() const override;
    void setFrame(const Rect& frame) override;
    double contentsScale() const override;
    void setContentsScale(double scale) override;
    std::optional<Color> backgroundColor() const override;
    void setBackgroundColor(std::optional<Color> color) override;
    void setContents(std::shared_ptr<const Image> image) override;
    void setContentsGravity(ContentsGravity gravity) override;
    void setMasksToBounds(bool masks) override;
    void addSublayer(const LayerRef& layer) override;
    void removeFromSuperlayer() override;

  private:
    NativeRef layer_;
};

/// CATransaction.
class DarwinTransactions : public LayerTransactions {
  public:
    void begin() override;
    void setDisableActions(bool disable) override;
    void commit() override;
    void flush() override;
};

class DarwinLayers : public Layers {
  public:
    LayerRef makeLayer() override;
    std::shared_ptr<MetalLayer> makeMetalLayer() override;
    LayerTransactions& transactions() override { return transactions_; }

  private:
    DarwinTransactions transactions_;
};

} // namespace vantor::darwin
