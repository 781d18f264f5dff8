#include "platform/linux/layers/linux_layer.h"

#include "platform/linux/layers/system_class.h"

#include <algorithm>

namespace vantor {

LinuxLayer::LinuxLayer(std::shared_ptr<LayerChanges> changes)
    : changes_(std::move(changes)), layerID_(changes_->nextNumber()) {}

LinuxLayer::~LinuxLayer() {
    for (const auto& sublayer : sublayers_) {
        sublayer->superlayer_ = nullptr;
    }
}

const ObjectClass& LinuxLayer::objectClass() const {
    static const SystemClass layerClass("CALayer");
    return layerClass;
}

void LinuxLayer::setFrame(const Rect& frame) {
    frame_ = frame;
    changes_->pending = true;
}

void LinuxLayer::setContentsScale(double scale) {
    contentsScale_ = scale;
    changes_->pending = true;
}

void LinuxLayer::setBackgroundColor(std::optional<Color> color) {
    background_ = color;
    changes_->pending = true;
}

void LinuxLayer::setContents(std::shared_ptr<const Image> image) {
    contents_ = std::move(image);
    picture_ = contents_ ? changes_->nextNumber() : 0;
    changes_->pending = true;
}

void LinuxLayer::setContentsGravity(ContentsGravity gravity) {
    gravity_ = gravity;
    changes_->pending = true;
}

void LinuxLayer::setMasksToBounds(bool masks) {
    masksToBounds_ = masks;
    changes_->pending = true;
}

void LinuxLayer::addSublayer(const LayerRef& layer) {
    // Every layer of this platform is one of ours.
    auto added = std::dynamic_pointer_cast<LinuxLayer>(layer);
    added->removeFromSuperlayer();
    added->superlayer_ = this;
    sublayers_.push_back(std::move(added));
    changes_->pending = true;
}

void LinuxLayer::removeFromSuperlayer() {
    if (superlayer_ == nullptr) {
        return;
    }
    auto& siblings = std::exchange(superlayer_, nullptr)->sublayers_;
    const auto self = std::find_if(siblings.begin(), siblings.end(),
                                   [this](const auto& layer) { return layer.get() == this; });
    // The superlayer's may be the last reference.
    const auto kept = *self;
    siblings.erase(self);
    changes_->pending = true;
}

const LinuxLayer& LinuxLayer::root() const {
    const LinuxLayer* layer = this;
    while (layer->superlayer_ != nullptr) {
        layer = layer->superlayer_;
    }
    return *layer;
}

} // namespace vantor
