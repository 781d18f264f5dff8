#include "agent/display.h"

#include "agent/host/memory_canvas.h"
#include "agent/host/swapchain.h"
#include "platform/images.h"
#include "platform/linux/gpu/vulkan_instance.h"
#include "platform/linux/system/linux_media_clock.h"

#include <algorithm>

namespace vantor::agent {
namespace {

constexpr std::size_t kBytesPerPixel = 4;
/// The part of a period by which a refresh may come early and still be the tick's.
constexpr double kJitter = 0.25;

double now() { return LinuxMediaClock().now(); }

/// Whether there is nothing that the context still owes for a whole picture.
bool isComplete(const HostedContext& context) {
    const auto layers = context.layers();
    return !layers.empty() &&
           std::all_of(layers.begin(), layers.end(), [&](const layerwire::LayerState& layer) {
               return layer.kind != layerwire::LayerKind::metal ||
                      context.frame(layer.layerID) != nullptr;
           });
}

} // namespace

Result<std::unique_ptr<Display>, std::string> Display::create(MainLoop& loop,
                                                              std::shared_ptr<vulkan::Context> gpu,
                                                              Output& output,
                                                              std::function<void()> tick) {
    std::unique_ptr<Display> display(new Display(loop, std::move(gpu), output, std::move(tick)));
    if (!display->compositor_ || !display->makeCanvas()) {
        return Failure{"the GPU (" + display->gpu_->name() + ") cannot show pictures on " +
                       output.description().connector};
    }
    if (output.isInMemory()) {
        // Something to look at from the start.
        display->changed_ = true;
        display->awaitRefresh();
    }
    return display;
}

Display::Display(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu, Output& output,
                 std::function<void()> tick)
    : loop_(loop), gpu_(std::move(gpu)), output_(output), tick_(std::move(tick)),
      compositor_(Compositor::create(gpu_)), alarm_(loop.alarm([this] { awaitRefresh(); })) {}

Display::~Display() = default;

bool Display::makeCanvas() {
    const OutputDescription& output = output_.description();
    if (output_.isInMemory()) {
        canvas_ = MemoryCanvas::create(gpu_, output.width, output.height);
    } else if (const VkSurfaceKHR surface = output_.makeSurface(vulkan::sharedInstance());
               surface != VK_NULL_HANDLE) {
        canvas_ = Swapchain::create(gpu_, surface, output.width, output.height);
    }
    return canvas_ != nullptr;
}

void Display::host(FileDescriptor socket) {
    released_ = false;
    next_ = std::make_unique<HostedContext>(loop_, gpu_, std::move(socket),
                                            ContextHandlers{.frameArrived =
                                                                [this] {
                                                                    frameWaits_ = true;
                                                                    tickingSince_.reset();
                                                                },
                                                            .changed = [this] { contextChanged(); },
                                                            .ended =
                                                                [this](const std::string& reason) {
                                                                    if (!released_) {
                                                                        trouble_ = reason;
                                                                    }
                                                                }});
}

void Display::contextChanged() {
    if (next_) {
        takeNext();
    }
    if (!context_) {
        return;
    }
    changed_ = true;
    if (!awaitsRefresh_ && output_.visibility() == Visibility::visible) {
        show();
        awaitRefresh();
    }
}

void Display::takeNext() {
    if (last_ || !isComplete(*next_)) {
        return;
    }
    last_ = std::exchange(context_, std::move(next_));
    compositor_->forgetStill();
    trouble_.clear();
}

void Display::takeBack() {
    if (!compositor_->isIdle()) {
        return;
    }
    last_.reset();
    if (context_) {
        context_->releaseReplaced();
    }
    if (next_) {
        next_->releaseReplaced();
    }
}

void Display::setLinkRate(std::uint32_t rate) {
    linkRate_ = rate;
    tickingSince_.reset();
    awaitRefresh();
}

void Display::setMaxFps(std::optional<double> maxFps) {
    maxFps_ = maxFps;
    awaitRefresh();
}

void Display::setRunning(bool running) {
    running_ = running;
    tickingSince_.reset();
    awaitRefresh();
}

void Display::outputChanged() {
    const OutputDescription& output = output_.description();
    if (auto* swapchain = dynamic_cast<Swapchain*>(canvas_.get())) {
        swapchain->resize(output.width, output.height);
    }
    compositor_->forgetOverlay();
    if (context_) {
        changed_ = true;
    }
    awaitRefresh();
}

void Display::refresh() {
    awaitsRefresh_ = false;
    takeBack();
    // At once, so that the extension wakes up only once for both, and draws while this shows.
    tickIfDue();
    if (next_) {
        takeNext();
    }
    if (changed_) {
        show();
    }
    awaitRefresh();
}

void Display::show() {
    if (!compositor_->isIdle()) {
        return;
    }
    const auto target = canvas_->begin();
    if (!target) {
        if (canvas_->state() == CanvasState::lost) {
            changed_ = false;
            setTrouble("what " + output_.description().connector + " shows pictures on is lost");
        }
        return;
    }
    changed_ = false;
    output_.willPresent();
    awaitsRefresh_ = true;
    if (!compositor_->compose(*target, {.context = context_.get(),
                                        .scale = output_.description().scale,
                                        .overlay = output_.overlay()})) {
        setTrouble("the GPU is lost");
        return;
    }
    if (!canvas_->show()) {
        // Shown again at its new size, if that was why.
        changed_ = canvas_->state() == CanvasState::outdated;
        return;
    }
    noteFrame();
}

void Display::noteFrame() {
    if (!std::exchange(frameWaits_, false)) {
        return;
    }
    lastFrame_ = now();
    shownAt_[framesShown_ % shownAt_.size()] = lastFrame_;
    if (framesShown_++ == 0) {
        firstFrame_ = lastFrame_;
    }
}

double Display::framesPerSecond(double time) const {
    const auto held =
        static_cast<std::ptrdiff_t>(std::min<std::uint64_t>(framesShown_, shownAt_.size()));
    return static_cast<double>(std::count_if(shownAt_.begin(), shownAt_.begin() + held,
                                             [time](double at) { return at > time - 1.0; }));
}

bool Display::isFrameOverdue(double seconds) {
    if (!tickingSince_ || now() - *tickingSince_ < seconds) {
        return false;
    }
    tickingSince_.reset();
    return true;
}

std::optional<double> Display::period() const {
    if (!running_ || linkRate_ == 0) {
        return std::nullopt;
    }
    double rate = linkRate_;
    if (maxFps_) {
        rate = std::min(rate, *maxFps_);
    }
    return 1.0 / rate;
}

void Display::tickIfDue() {
    const auto interval = period();
    const double time = now();
    if (!interval || time + *interval * kJitter < due_) {
        return;
    }
    // A tick that was missed is not made up for.
    due_ = (time - due_ < *interval ? due_ : time) + *interval;
    if (!tickingSince_) {
        tickingSince_ = time;
    }
    tick_();
}

void Display::awaitRefresh() {
    if (awaitsRefresh_) {
        return;
    }
    const bool owes = changed_ || last_ || (context_ && context_->hasReplaced());
    const auto interval = period();
    if (!owes && !interval) {
        alarm_->cancel();
        return;
    }
    const double wait = due_ - now();
    const double refresh = 1.0 / output_.description().refreshRate;
    // A refresh that would come too early for the tick is not asked for.
    if (!owes && wait > refresh) {
        alarm_->set(wait - refresh / 2);
        return;
    }
    awaitsRefresh_ = true;
    output_.requestRefresh();
}

std::optional<std::vector<std::uint8_t>> Display::pixels() {
    auto* memory = dynamic_cast<MemoryCanvas*>(canvas_.get());
    if (memory == nullptr) {
        return std::nullopt;
    }
    std::vector<std::uint8_t> bytes(std::size_t{memory->width()} * memory->height() *
                                    kBytesPerPixel);
    return memory->read(bytes) ? std::optional(std::move(bytes)) : std::nullopt;
}

bool Display::writePNG(Images& images, const std::filesystem::path& file) {
    const auto bytes = pixels();
    return bytes && images.writePNG(file, {.bytes = *bytes,
                                           .width = canvas_->width(),
                                           .height = canvas_->height(),
                                           .bytesPerRow = canvas_->width() * kBytesPerPixel});
}

} // namespace vantor::agent
