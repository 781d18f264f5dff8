#include "platform/darwin/darwin_layers.h"

#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/foundation.h"

#import <QuartzCore/QuartzCore.h>

namespace vantor::darwin {
namespace {

CALayer* caLayer(const NativeRef& layer) { return native<CALayer*>(layer); }

/// Null for nothing; the caller's to release. A grey is of the generic grey space.
CGColorRef createColor(const std::optional<Color>& color) {
    if (!color) {
        return nullptr;
    }
    if (color->red == color->green && color->green == color->blue) {
        return CGColorCreateGenericGray(color->red, color->alpha);
    }
    return CGColorCreateGenericRGB(color->red, color->green, color->blue, color->alpha);
}

} // namespace

const ObjectClass& DarwinLayer::objectClass() const { return classOf(layer_); }

Rect DarwinLayer::frame() const {
    const CGRect frame = caLayer(layer_).frame;
    return {.origin = {.x = frame.origin.x, .y = frame.origin.y},
            .size = {.width = frame.size.width, .height = frame.size.height}};
}

void DarwinLayer::setFrame(const Rect& frame) {
    caLayer(layer_).frame =
        CGRectMake(frame.origin.x, frame.origin.y, frame.size.width, frame.size.height);
}

double DarwinLayer::contentsScale() const { return caLayer(layer_).contentsScale; }
void DarwinLayer::setContentsScale(double scale) { caLayer(layer_).contentsScale = scale; }

std::optional<Color> DarwinLayer::backgroundColor() const {
    CGColorRef color = caLayer(layer_).backgroundColor;
    if (color == nullptr) {
        return std::nullopt;
    }
    const CGFloat* values = CGColorGetComponents(color);
    if (CGColorGetNumberOfComponents(color) == 2) {
        return Color::gray(values[0], values[1]);
    }
    return Color{.red = values[0], .green = values[1], .blue = values[2], .alpha = values[3]};
}

void DarwinLayer::setBackgroundColor(std::optional<Color> color) {
    CGColorRef made = createColor(color);
    caLayer(layer_).backgroundColor = made;
    CGColorRelease(made);
}

void DarwinLayer::setContents(std::shared_ptr<const Image> image) {
    const auto* holder = dynamic_cast<const NativeHolder*>(image.get());
    caLayer(layer_).contents = holder != nullptr ? darwin::native<id>(holder->native()) : nil;
}

void DarwinLayer::setContentsGravity(ContentsGravity gravity) {
    caLayer(layer_).contentsGravity = gravity == ContentsGravity::resizeAspectFill
                                          ? kCAGravityResizeAspectFill
                                          : kCAGravityResize;
}

void DarwinLayer::setMasksToBounds(bool masks) { caLayer(layer_).masksToBounds = masks; }

void DarwinLayer::addSublayer(const LayerRef& layer) {
    [caLayer(layer_) addSublayer:caLayer(unwrap(layer))];
}

void DarwinLayer::removeFromSuperlayer() { [caLayer(layer_) removeFromSuperlayer]; }
void DarwinTransactions::begin() { [CATransaction begin]; }

void DarwinTransactions::setDisableActions(bool disable) {
    [CATransaction setDisableActions:disable];
}

void DarwinTransactions::commit() { [CATransaction commit]; }
void DarwinTransactions::flush() { [CATransaction flush]; }

LayerRef DarwinLayers::makeLayer() {
    return std::make_shared<DarwinLayer>(nativeRef([CALayer layer]));
}

} // namespace vantor::darwin
