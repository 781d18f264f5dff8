#include "agent/host/compositor.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <utility>

namespace vantor::agent {
namespace {

using namespace layerwire;
using vulkan::Contents;
using vulkan::Ownership;

constexpr VkImageUsageFlags kUploadedUsage =
    VK_IMAGE_USAGE_TRANSFER_DST_BIT | VK_IMAGE_USAGE_TRANSFER_SRC_BIT;
constexpr VkImageSubresourceLayers kColor{VK_IMAGE_ASPECT_COLOR_BIT, 0, 0, 1};

PixelRect intersection(const PixelRect& one, const PixelRect& other) {
    return {.left = std::max(one.left, other.left),
            .top = std::max(one.top, other.top),
            .right = std::min(one.right, other.right),
            .bottom = std::min(one.bottom, other.bottom)};
}

std::int32_t pixel(double value) { return static_cast<std::int32_t>(std::lround(value)); }

} // namespace

std::unique_ptr<Compositor> Compositor::create(std::shared_ptr<vulkan::Context> gpu) {
    std::unique_ptr<Compositor> made(new Compositor(std::move(gpu)));
    made->commands_ = CommandBuffer::create(made->gpu_);
    return made->commands_ ? std::move(made) : nullptr;
}

bool Compositor::compose(const CanvasImage& target, const Scene& scene) {
    if (!commands_->begin()) {
        return false;
    }
    if (std::exchange(isStillForgotten_, false)) {
        still_ = {};
    }
    if (std::exchange(isOverlayForgotten_, false)) {
        overlay_ = {};
    }
    target_ = &target.image;
    isWritten_ = false;
    vulkan::transition(*gpu_, commands_->handle(), *target_, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                       Contents::discarded);
    if (scene.context != nullptr) {
        draw(*scene.context, scene.scale);
    } else {
        clear();
    }
    if (scene.overlay != nullptr) {
        drawOverlay(*scene.overlay);
    }
    vulkan::transition(*gpu_, commands_->handle(), *target_, target.layout);
    return commands_->submit(target.semaphores);
}

void Compositor::draw(const HostedContext& context, double scale) {
    const auto layers = context.layers();
    std::array<Placed, kMaxLayers> placed{};
    for (std::size_t i = 0; i < layers.size(); ++i) {
        place(layers, i, scale, placed);
    }
    // A frame is opaque: what lies below one that fills the target need not be drawn.
    std::size_t first = layers.size();
    while (first > 0 && !(context.frame(layers[first - 1].layerID) != nullptr &&
                          fillsTarget(placed[first - 1]))) {
        --first;
    }
    if (first > 0) {
        drawFrame(placed[first - 1], *context.frame(layers[first - 1].layerID));
    } else {
        clear();
    }
    for (std::size_t i = first; i < layers.size(); ++i) {
        fill(placed[i], layers[i]);
        if (const Picture* picture = context.picture(layers[i].picture)) {
            drawPicture(placed[i], layers[i], *picture);
        }
        if (HostedFrame* frame = context.frame(layers[i].layerID)) {
            drawFrame(placed[i], *frame);
        }
    }
}

void Compositor::place(std::span<const LayerState> layers, std::size_t index, double scale,
                       std::span<Placed> placed) const {
    const LayerState& layer = layers[index];
    const Placed* parent = layer.parent == kNoParent ? nullptr : &placed[layer.parent];
    Placed& here = placed[index];
    here.originX = layer.x + (parent != nullptr ? parent->originX : 0);
    here.originY = layer.y + (parent != nullptr ? parent->originY : 0);
    here.rect = {.left = pixel(here.originX * scale),
                 .top = pixel(here.originY * scale),
                 .right = pixel((here.originX + layer.width) * scale),
                 .bottom = pixel((here.originY + layer.height) * scale)};
    const bool parentMasks = parent != nullptr && layers[layer.parent].masksToBounds != 0;
    const PixelRect outside = parent != nullptr ? parent->clip : wholeTarget();
    here.clip = parentMasks ? intersection(outside, parent->rect) : outside;
}

PixelRect Compositor::wholeTarget() const {
    return {.left = 0,
            .top = 0,
            .right = static_cast<std::int32_t>(target_->width()),
            .bottom = static_cast<std::int32_t>(target_->height())};
}

bool Compositor::fillsTarget(const Placed& placed) const {
    return intersection(placed.rect, placed.clip) == wholeTarget();
}

void Compositor::startWriting() {
    if (std::exchange(isWritten_, true)) {
        vulkan::transition(*gpu_, commands_->handle(), *target_,
                           VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL);
    }
}

void Compositor::clear() {
    startWriting();
    const VkClearColorValue black{{0.0F, 0.0F, 0.0F, 1.0F}};
    const VkImageSubresourceRange whole{VK_IMAGE_ASPECT_COLOR_BIT, 0, 1, 0, 1};
    vkCmdClearColorImage(commands_->handle(), target_->handle(),
                         VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, &black, 1, &whole);
}

void Compositor::fill(const Placed& placed, const LayerState& layer) {
    const PixelRect area = intersection(placed.rect, placed.clip);
    if (layer.background[3] <= 0.0F || area.isEmpty()) {
        return;
    }
    vulkan::transition(*gpu_, commands_->handle(), *target_,
                       VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL);
    VkRenderingAttachmentInfo attachment{};
    attachment.sType = VK_STRUCTURE_TYPE_RENDERING_ATTACHMENT_INFO;
    attachment.imageView = target_->view();
    attachment.imageLayout = VK_IMAGE_LAYOUT_COLOR_ATTACHMENT_OPTIMAL;
    // The clear of a render area is the cheapest filled rectangle there is.
    attachment.loadOp = VK_ATTACHMENT_LOAD_OP_CLEAR;
    attachment.storeOp = VK_ATTACHMENT_STORE_OP_STORE;
    std::copy_n(layer.background.begin(), 3, attachment.clearValue.color.float32);
    attachment.clearValue.color.float32[3] = 1.0F;
    VkRenderingInfo info{};
    info.sType = VK_STRUCTURE_TYPE_RENDERING_INFO;
    info.renderArea = {
        {area.left, area.top},
        {static_cast<std::uint32_t>(area.width()), static_cast<std::uint32_t>(area.height())}};
    info.layerCount = 1;
    info.colorAttachmentCount = 1;
    info.pColorAttachments = &attachment;
    vkCmdBeginRendering(commands_->handle(), &info);
    vkCmdEndRendering(commands_->handle());
    vulkan::transition(*gpu_, commands_->handle(), *target_, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL);
    isWritten_ = false;
}

void Compositor::drawFrame(const Placed& placed, HostedFrame& hosted) {
    vulkan::DeviceImage& frame = *hosted.image;
    const PixelRect area = intersection(placed.rect, placed.clip);
    if (area.isEmpty()) {
        return;
    }
    startWriting();
    takeOver(hosted);
    const bool oneToOne = static_cast<std::uint32_t>(placed.rect.width()) == frame.width() &&
                          static_cast<std::uint32_t>(placed.rect.height()) == frame.height() &&
                          frame.format() == target_->format();
    if (oneToOne) {
        VkImageCopy copy{};
        copy.srcSubresource = kColor;
        copy.srcOffset = {area.left - placed.rect.left, area.top - placed.rect.top, 0};
        copy.dstSubresource = kColor;
        copy.dstOffset = {area.left, area.top, 0};
        copy.extent = {static_cast<std::uint32_t>(area.width()),
                       static_cast<std::uint32_t>(area.height()), 1};
        vkCmdCopyImage(commands_->handle(), frame.handle(), VK_IMAGE_LAYOUT_GENERAL,
                       target_->handle(), VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, 1, &copy);
    } else {
        // A frame of another size than its layer is one of before a resize: it is stretched, as
        // layers stretch their contents.
        stretch(frame, VK_IMAGE_LAYOUT_GENERAL, placed.rect, area);
    }
    if (!hosted.bytes) {
        vulkan::transition(*gpu_, commands_->handle(), frame, VK_IMAGE_LAYOUT_GENERAL,
                           Contents::kept, Ownership::releasedOutside);
    }
}

void Compositor::takeOver(HostedFrame& hosted) {
    vulkan::DeviceImage& frame = *hosted.image;
    if (!hosted.bytes) {
        vulkan::transition(*gpu_, commands_->handle(), frame, VK_IMAGE_LAYOUT_GENERAL,
                           Contents::kept, Ownership::acquiredFromOutside);
    } else if (std::exchange(hosted.bytesAreNew, false)) {
        vulkan::transition(*gpu_, commands_->handle(), frame, VK_IMAGE_LAYOUT_GENERAL,
                           Contents::discarded);
        vulkan::copyIn(commands_->handle(), *hosted.bytes, frame);
        vulkan::transition(*gpu_, commands_->handle(), frame, VK_IMAGE_LAYOUT_GENERAL);
    }
}

void Compositor::drawPicture(const Placed& placed, const LayerState& layer,
                             const Picture& picture) {
    PixelRect target = placed.rect;
    PixelRect clip = placed.clip;
    if (layer.gravity == Gravity::aspectFill && !target.isEmpty()) {
        const double fillScale = std::max(target.width() / static_cast<double>(picture.width),
                                          target.height() / static_cast<double>(picture.height));
        const std::int32_t width = pixel(picture.width * fillScale);
        const std::int32_t height = pixel(picture.height * fillScale);
        target.left += (target.width() - width) / 2;
        target.top += (target.height() - height) / 2;
        target.right = target.left + width;
        target.bottom = target.top + height;
    }
    if (layer.masksToBounds != 0) {
        clip = intersection(clip, placed.rect);
    }
    const PixelRect area = intersection(target, clip);
    if (area.isEmpty()) {
        return;
    }
    if (still_.imageID != layer.picture) {
        still_.imageID = upload(still_, picture) ? layer.picture : kNoImage;
    }
    if (still_.imageID != kNoImage) {
        startWriting();
        stretch(*still_.image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, target, area);
    }
}

void Compositor::drawOverlay(const Picture& picture) {
    if (!overlay_.image && !upload(overlay_, picture)) {
        return;
    }
    const PixelRect place{.left = 0,
                          .top = 0,
                          .right = static_cast<std::int32_t>(picture.width),
                          .bottom = static_cast<std::int32_t>(picture.height)};
    startWriting();
    stretch(*overlay_.image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL, place,
            intersection(place, wholeTarget()));
}

bool Compositor::upload(Uploaded& place, const Picture& picture) const {
    place.staging =
        vulkan::Buffer::create(gpu_, picture.bytes.size(), VK_BUFFER_USAGE_TRANSFER_SRC_BIT);
    place.image = vulkan::DeviceImage::create(gpu_, {.format = VK_FORMAT_B8G8R8A8_UNORM,
                                                     .width = picture.width,
                                                     .height = picture.height,
                                                     .usage = kUploadedUsage});
    if (!place.staging || !place.image) {
        place = {};
        return false;
    }
    std::memcpy(place.staging->bytes().data(), picture.bytes.data(), picture.bytes.size());
    const VkCommandBuffer commands = commands_->handle();
    vulkan::transition(*gpu_, commands, *place.image, VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL,
                       Contents::discarded);
    vulkan::copyIn(commands, *place.staging, *place.image);
    vulkan::transition(*gpu_, commands, *place.image, VK_IMAGE_LAYOUT_TRANSFER_SRC_OPTIMAL);
    return true;
}

void Compositor::stretch(const vulkan::DeviceImage& source, VkImageLayout layout,
                         const PixelRect& target, const PixelRect& area) {
    // Clipped by taking the matching part of it.
    const double stretchX = source.width() / static_cast<double>(target.width());
    const double stretchY = source.height() / static_cast<double>(target.height());
    VkImageBlit blit{};
    blit.srcSubresource = kColor;
    blit.srcOffsets[0] = {pixel((area.left - target.left) * stretchX),
                          pixel((area.top - target.top) * stretchY), 0};
    blit.srcOffsets[1] = {pixel((area.right - target.left) * stretchX),
                          pixel((area.bottom - target.top) * stretchY), 1};
    blit.dstSubresource = kColor;
    blit.dstOffsets[0] = {area.left, area.top, 0};
    blit.dstOffsets[1] = {area.right, area.bottom, 1};
    vkCmdBlitImage(commands_->handle(), source.handle(), layout, target_->handle(),
                   VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, 1, &blit, VK_FILTER_LINEAR);
}

} // namespace vantor::agent
