#include "agent/output/window/window_output.h"

#include "agent/output/window/help_panel.h"

#include <SDL.h>
#include <SDL_vulkan.h>
#include <algorithm>
#include <utility>

namespace vantor::agent {
namespace {

constexpr std::uint32_t kMaxExtent = 16384;
constexpr double kUsualRate = 60;
/// Long enough to be read, short enough not to be in the way.
constexpr double kHelpSeconds = 4;

int extent(std::uint32_t points) { return static_cast<int>(std::clamp(points, 1U, kMaxExtent)); }

double rateOfDisplay(SDL_Window* window) {
    SDL_DisplayMode mode{};
    const int display = SDL_GetWindowDisplayIndex(window);
    const bool isKnown =
        display >= 0 && SDL_GetCurrentDisplayMode(display, &mode) == 0 && mode.refresh_rate > 0;
    return isKnown ? mode.refresh_rate : kUsualRate;
}

} // namespace

std::unique_ptr<WindowOutput> WindowOutput::create(const WindowOptions& options,
                                                   std::string connector) {
    SDL_Window* const window =
        SDL_CreateWindow(options.title.c_str(), SDL_WINDOWPOS_UNDEFINED, SDL_WINDOWPOS_UNDEFINED,
                         extent(options.width), extent(options.height),
                         SDL_WINDOW_VULKAN | SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI);
    if (window == nullptr) {
        return nullptr;
    }
    std::unique_ptr<WindowOutput> made(new WindowOutput(window));
    made->description_.connector = std::move(connector);
    return made;
}

WindowOutput::~WindowOutput() {
    if (helpEnd_) {
        helpEnd_->cancel();
    }
}

void WindowOutput::attach(MainLoop& loop, NativeDisplay& native, std::function<void()> refresh) {
    loop_ = &loop;
    refresh_ = std::move(refresh);
    pacer_ = native.makePacer(loop, *window_, [this] { due(); });
    native.watchObscurity(*window_);
    update();
}

Visibility WindowOutput::visibility() const {
    return isHidden_ || isObscured_ ? Visibility::off : Visibility::visible;
}

VkSurfaceKHR WindowOutput::makeSurface(VkInstance instance) {
    VkSurfaceKHR surface = VK_NULL_HANDLE;
    return SDL_Vulkan_CreateSurface(window_.get(), instance, &surface) == SDL_TRUE ? surface
                                                                                   : VK_NULL_HANDLE;
}

void WindowOutput::requestRefresh() {
    isRefreshWanted_ = true;
    if (visibility() == Visibility::visible) {
        pacer_->request();
    }
}

void WindowOutput::willPresent() {
    isRefreshWanted_ = true;
    pacer_->willPresent();
    if (!helpEnd_) {
        helpEnd_ = loop_->asyncAfter(kHelpSeconds, [this] { showHelp(false); });
    }
}

void WindowOutput::due() {
    // A window that was hidden meanwhile asks again when it is seen.
    if (visibility() == Visibility::visible && std::exchange(isRefreshWanted_, false)) {
        refresh_();
    }
}

const Picture* WindowOutput::overlay() const { return help_.bytes.empty() ? nullptr : &help_; }

void WindowOutput::setObscured(bool isObscured) {
    isObscured_ = isObscured;
    isStale_ = true;
}

void WindowOutput::showHelp(bool isShown) {
    isHelpWanted_ = isShown;
    isStale_ = true;
}

void WindowOutput::take(const SDL_WindowEvent& event) {
    isStale_ = true;
    switch (event.event) {
    case SDL_WINDOWEVENT_HIDDEN:
    case SDL_WINDOWEVENT_MINIMIZED:
        isHidden_ = true;
        break;
    case SDL_WINDOWEVENT_SHOWN:
    case SDL_WINDOWEVENT_RESTORED:
    case SDL_WINDOWEVENT_MAXIMIZED:
        isHidden_ = false;
        break;
    case SDL_WINDOWEVENT_EXPOSED:
        isExposed_ = true;
        break;
    default:
        break;
    }
}

void WindowOutput::toggleFullScreen() {
    const bool isFull = (SDL_GetWindowFlags(window_.get()) & SDL_WINDOW_FULLSCREEN_DESKTOP) != 0;
    SDL_SetWindowFullscreen(window_.get(), isFull ? 0 : SDL_WINDOW_FULLSCREEN_DESKTOP);
}

OutputDescription WindowOutput::describe() const {
    int points = 0;
    int width = 0;
    int height = 0;
    SDL_GetWindowSize(window_.get(), &points, nullptr);
    SDL_GetWindowSizeInPixels(window_.get(), &width, &height);
    OutputDescription description = description_;
    // For a moment of its making a window has no size on some display servers.
    if (width > 0 && height > 0 && points > 0) {
        description.width = static_cast<std::uint32_t>(width);
        description.height = static_cast<std::uint32_t>(height);
        description.scale = static_cast<double>(width) / points;
    }
    description.refreshRate = rateOfDisplay(window_.get());
    return description;
}

bool WindowOutput::update() {
    if (!std::exchange(isStale_, false)) {
        return false;
    }
    const Told now{
        .description = describe(), .visibility = visibility(), .isHelpShown = isHelpWanted_};
    if (!std::exchange(isExposed_, false) && told_ == now) {
        return false;
    }
    if (!told_ || told_->isHelpShown != now.isHelpShown || told_->description != now.description) {
        help_ = now.isHelpShown ? drawHelpPanel(now.description) : Picture{};
    }
    description_ = now.description;
    told_ = now;
    pacer_->setRate(description_.refreshRate);
    if (isRefreshWanted_ && visibility() == Visibility::visible) {
        pacer_->request();
    }
    return true;
}

} // namespace vantor::agent
