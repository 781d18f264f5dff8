#include "agent/display.h"

#include "platform/images.h"
#include "platform/linux/system/linux_media_clock.h"

#include <vector>

namespace vantor::agent {
namespace {

constexpr std::size_t kBytesPerPixel = 4;

} // namespace

std::unique_ptr<Display> Display::create(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu,
                                         std::uint32_t number, const DisplayMode& mode,
                                         std::string choice) {
    std::unique_ptr<Display> display(
        new Display(loop, std::move(gpu), number, mode, std::move(choice)));
    return display->compositor_ ? std::move(display) : nullptr;
}

Display::Display(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu, std::uint32_t number,
                 const DisplayMode& mode, std::string choice)
    : loop_(loop), gpu_(std::move(gpu)), number_(number), mode_(mode), choice_(std::move(choice)),
      compositor_(Compositor::create(gpu_, mode.width, mode.height)) {}

void Display::host(FileDescriptor socket) {
    context_ = std::make_unique<HostedContext>(
        loop_, gpu_, std::move(socket),
        ContextHandlers{.changed = [this] { changed_ = true; },
                        .frameArrived = [this] { frameWaits_ = true; },
                        .ended =
                            [this](const std::string& reason) {
                                if (!released_) {
                                    trouble_ = reason;
                                }
                            }});
}

void Display::refresh() {
    if (!context_ || !compositor_->isIdle()) {
        return;
    }
    // The last composition, the only one that can have used them, is done.
    context_->releaseReplaced();
    if (!changed_) {
        return;
    }
    if (!compositor_->compose(*context_, mode_.scale)) {
        setTrouble("the GPU is lost");
        return;
    }
    changed_ = false;
    if (std::exchange(frameWaits_, false)) {
        lastFrame_ = LinuxMediaClock().now();
        if (framesShown_++ == 0) {
            firstFrame_ = lastFrame_;
        }
    }
}

std::optional<std::vector<std::uint8_t>> Display::pixels() {
    std::vector<std::uint8_t> bytes(std::size_t{mode_.width} * mode_.height * kBytesPerPixel);
    return compositor_->read(bytes) ? std::optional(std::move(bytes)) : std::nullopt;
}

bool Display::writePNG(Images& images, const std::filesystem::path& file) {
    const auto bytes = pixels();
    return bytes && images.writePNG(file, {.bytes = *bytes,
                                           .width = mode_.width,
                                           .height = mode_.height,
                                           .bytesPerRow = mode_.width * kBytesPerPixel});
}

} // namespace vantor::agent
