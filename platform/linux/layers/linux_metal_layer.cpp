#include "platform/linux/layers/linux_metal_layer.h"

#include "platform/linux/layers/layer_wire.h"
#include "platform/linux/layers/system_class.h"

#include <algorithm>
#include <cmath>
#include <sys/eventfd.h>
#include <utility>

namespace vantor {
namespace {

/// The whole pixels of one side; 0 for what no image can have.
std::uint32_t pixels(double side) {
    return side >= 1.0 && side <= layerwire::kMaxImageSide ? static_cast<std::uint32_t>(side) : 0;
}

/// A frame on which the GPU spends longer than this is a slow one.
constexpr double kSlowSeconds = 2.0;
/// What one band of a slow frame should take: others wait for it at most.
constexpr double kBandSeconds = 1.0 / 60.0;
constexpr double kMaxBands = 128;

/// The bands for a frame after one on which the GPU spent so long.
std::uint32_t bandsAfter(double seconds) {
    return seconds > kSlowSeconds
               ? static_cast<std::uint32_t>(std::min(std::ceil(seconds / kBandSeconds), kMaxBands))
               : 1;
}

} // namespace

FrameSignal::FrameSignal() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

void FrameSignal::raise() { eventfd_write(descriptor_.get(), 1); }

void FrameSignal::clear() {
    eventfd_t count = 0;
    eventfd_read(descriptor_.get(), &count);
}

LayerDrawable::LayerDrawable(std::shared_ptr<vulkan::VulkanTexture> image, std::uint32_t imageID,
                             std::shared_ptr<FrameSignal> signal)
    : image_(std::move(image)), imageID_(imageID), signal_(std::move(signal)) {}

bool LayerDrawable::isFree() const {
    return state_.load(std::memory_order_acquire) == State::idle && !latest_ && holders_ == 0;
}

gpu::DrawableRef LayerDrawable::acquire(std::uint64_t sequence) {
    sequence_ = sequence;
    state_.store(State::drawing, std::memory_order_relaxed);
    return gpu::DrawableRef(this);
}

bool LayerDrawable::takeFinished() {
    if (state_.load(std::memory_order_acquire) != State::finished) {
        return false;
    }
    state_.store(State::idle, std::memory_order_relaxed);
    return true;
}

std::uint64_t LayerDrawable::finished(double seconds) {
    seconds_ = seconds;
    // The main thread may let go of this drawable as soon as it sees the state.
    const std::shared_ptr<FrameSignal> signal = signal_;
    state_.store(State::finished, std::memory_order_release);
    signal->raise();
    return 0;
}

bool LayerDrawable::copyToMemory(const vulkan::DeviceParts& parts) {
    if (!memory_) {
        memory_ = FrameMemory::create(image(), [signal = signal_] { signal->raise(); });
    }
    return memory_ && memory_->copy(parts, image(), sequence_);
}

void LayerDrawable::giveBack() { state_.store(State::idle, std::memory_order_relaxed); }

LinuxMetalLayer::LinuxMetalLayer(std::shared_ptr<LayerChanges> changes,
                                 std::shared_ptr<FrameSignal> signal)
    : LinuxLayer(std::move(changes)), signal_(std::move(signal)) {}

const ObjectClass& LinuxMetalLayer::objectClass() const {
    static const SystemClass layerClass("CAMetalLayer");
    return layerClass;
}

void LinuxMetalLayer::setDevice(std::shared_ptr<gpu::Device> device) {
    // Every device of this platform is one of ours.
    device_ = std::static_pointer_cast<vulkan::VulkanDevice>(std::move(device));
}

void LinuxMetalLayer::setPixelFormat(gpu::PixelFormat format) { pixelFormat_ = format; }

void LinuxMetalLayer::setMaximumDrawableCount(int) {
    // Two are the least that a layer may have, and all that this platform makes.
}

gpu::DrawableRef LinuxMetalLayer::nextDrawable() {
    const std::uint32_t width = pixels(drawableSize_.width);
    const std::uint32_t height = pixels(drawableSize_.height);
    if (!device_ || width == 0 || height == 0 || pixelFormat_ != gpu::PixelFormat::bgra8Unorm) {
        return nullptr;
    }
    const std::shared_ptr<vulkan::DeviceParts> gpu = device_->parts();
    if (!gpu) {
        // Lost, and not only to this layer.
        signal_->raise();
        return nullptr;
    }
    // A frame that is finished but was not looked at yet may free the other drawable.
    takeFinished();
    if (isSlow() && std::any_of(drawables_.begin(), drawables_.end(), [](const auto& drawable) {
            return drawable && drawable->isUnderWay();
        })) {
        return nullptr;
    }
    for (auto& drawable : drawables_) {
        if (drawable && !drawable->isFree()) {
            continue;
        }
        if (!drawable || drawable->image().width() != width ||
            drawable->image().height() != height || drawable->image().context() != gpu->context) {
            auto image = device_->newSharedTexture(width, height);
            if (!image) {
                return nullptr;
            }
            drawable =
                std::make_shared<LayerDrawable>(std::move(image), changes()->nextNumber(), signal_);
            changes()->pending = true;
        }
        drawable->setBands(std::min(bands_, height));
        return drawable->acquire(++lastSequence_);
    }
    return nullptr;
}

bool LinuxMetalLayer::takeFinished() {
    bool changed = false;
    if (latest_ && !device_->parts()) {
        std::exchange(latest_, nullptr)->setLatest(false);
        changed = true;
    }
    for (const auto& drawable : drawables_) {
        if (!drawable || !drawable->takeFinished()) {
            continue;
        }
        bands_ = bandsAfter(drawable->seconds());
        if (latest_ && latest_->sequence() > drawable->sequence()) {
            continue;
        }
        if (latest_) {
            latest_->setLatest(false);
        }
        latest_ = drawable;
        latest_->setLatest(true);
        changed = true;
    }
    if (changed) {
        changes()->pending = true;
    }
    return changed;
}

} // namespace vantor
