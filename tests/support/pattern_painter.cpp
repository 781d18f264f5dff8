#include "tests/support/pattern_painter.h"

#include "platform/linux/gpu/vulkan_instance.h"

namespace vantor::tests {
namespace {

constexpr std::size_t kPixelBytes = 4;

} // namespace

std::unique_ptr<PatternPainter> PatternPainter::create(std::shared_ptr<vulkan::Context> gpu,
                                                       agent::Output& output, Pattern pattern) {
    std::unique_ptr<PatternPainter> made(
        new PatternPainter(std::move(gpu), output, std::move(pattern)));
    const VkSurfaceKHR surface = output.makeSurface(vulkan::sharedInstance());
    if (surface == VK_NULL_HANDLE) {
        return nullptr;
    }
    made->canvas_ = agent::Swapchain::create(made->gpu_, surface, output.description().width,
                                             output.description().height);
    made->commands_ = agent::CommandBuffer::create(made->gpu_);
    return made->canvas_ && made->commands_ ? std::move(made) : nullptr;
}

bool PatternPainter::draw(const vulkan::DeviceImage& image) {
    if (pictureWidth_ == image.width() && pictureHeight_ == image.height()) {
        return true;
    }
    pictureWidth_ = image.width();
    pictureHeight_ = image.height();
    picture_ =
        vulkan::Buffer::create(gpu_, std::size_t{pictureWidth_} * pictureHeight_ * kPixelBytes,
                               VK_BUFFER_USAGE_TRANSFER_SRC_BIT);
    if (!picture_) {
        return false;
    }
    auto bytes = picture_->bytes().begin();
    for (std::uint32_t y = 0; y < pictureHeight_; ++y) {
        for (std::uint32_t x = 0; x < pictureWidth_; ++x) {
            auto [first, second, third] = pattern_(x, y);
            if (image.format() == VK_FORMAT_B8G8R8A8_UNORM) {
                std::swap(first, third);
            }
            for (const std::uint8_t component : {first, second, third, std::uint8_t{0xFF}}) {
                *bytes++ = component;
            }
        }
    }
    return true;
}

bool PatternPainter::paint() {
    canvas_->resize(output_.description().width, output_.description().height);
    const auto target = canvas_->begin();
    if (!target || !draw(target->image) || !commands_->begin()) {
        return false;
    }
    vulkan::transition(*gpu_, commands_->handle(), target->image,
                       VK_IMAGE_LAYOUT_TRANSFER_DST_OPTIMAL, vulkan::Contents::discarded);
    vulkan::copyIn(commands_->handle(), *picture_, target->image);
    vulkan::transition(*gpu_, commands_->handle(), target->image, target->layout);
    if (!commands_->submit(target->semaphores)) {
        return false;
    }
    output_.willPresent();
    const bool isShown = canvas_->show();
    // The picture may be another one from here on.
    return commands_->wait() && isShown;
}

} // namespace vantor::tests
