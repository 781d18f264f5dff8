#pragma once
// A node of the layer tree. Main thread.

#include "platform/layers.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace vantor {

/// Whether any tree changed since it was last sent, and the source of layer and picture numbers.
struct LayerChanges {
    bool pending = false;
    std::uint32_t lastNumber = 0;

    std::uint32_t nextNumber() { return ++lastNumber; }
};

class LinuxMetalLayer;

class LinuxLayer : public virtual Layer, public std::enable_shared_from_this<LinuxLayer> {
  public:
    explicit LinuxLayer(std::shared_ptr<LayerChanges> changes);
    ~LinuxLayer() override;

    const ObjectClass& objectClass() const override;

    Rect frame() const override { return frame_; }
    void setFrame(const Rect& frame) override;
    double contentsScale() const override { return contentsScale_; }
    void setContentsScale(double scale) override;
    std::optional<Color> backgroundColor() const override { return background_; }
    void setBackgroundColor(std::optional<Color> color) override;
    void setContents(std::shared_ptr<const Image> image) override;
    void setContentsGravity(ContentsGravity gravity) override;
    void setMasksToBounds(bool masks) override;
    void addSublayer(const LayerRef& layer) override;
    void removeFromSuperlayer() override;

    std::uint32_t layerID() const { return layerID_; }
    const std::vector<std::shared_ptr<LinuxLayer>>& sublayers() const { return sublayers_; }
    const LinuxLayer& root() const;
    const std::shared_ptr<const Image>& contents() const { return contents_; }
    /// The number of `contents`; 0 without.
    std::uint32_t picture() const { return picture_; }
    ContentsGravity gravity() const { return gravity_; }
    bool masksToBounds() const { return masksToBounds_; }

    /// This layer as a Metal layer, or null.
    virtual LinuxMetalLayer* metal() { return nullptr; }

  protected:
    const std::shared_ptr<LayerChanges>& changes() const { return changes_; }

  private:
    std::shared_ptr<LayerChanges> changes_;
    std::uint32_t layerID_;
    Rect frame_;
    double contentsScale_ = 1.0;
    std::optional<Color> background_;
    std::shared_ptr<const Image> contents_;
    std::uint32_t picture_ = 0;
    ContentsGravity gravity_ = ContentsGravity::resize;
    bool masksToBounds_ = false;
    std::vector<std::shared_ptr<LinuxLayer>> sublayers_;
    /// Keeps this layer; null at the root.
    LinuxLayer* superlayer_ = nullptr;
};

} // namespace vantor
