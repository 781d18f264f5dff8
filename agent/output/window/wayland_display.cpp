#include "agent/output/window/native_display.h"

#include <SDL.h>
#include <SDL_syswm.h>
#include <utility>
#include <wayland-client.h>

namespace vantor::agent {
namespace {

SDL_SysWMinfo infoOf(SDL_Window& window) {
    SDL_SysWMinfo info;
    SDL_VERSION(&info.version);
    SDL_GetWindowWMInfo(&window, &info);
    return info;
}

struct DestroyCallback {
    void operator()(wl_callback* callback) const { wl_callback_destroy(callback); }
};

/// The compositor's own pace: its frame callbacks. A request of one counts from the surface's next
/// commit, which is a present's or one of ours.
class CallbackPacer : public FramePacer {
  public:
    CallbackPacer(MainLoop& loop, wl_display* display, wl_surface* surface,
                  std::function<void()> due)
        : loop_(loop), display_(display), surface_(surface), due_(std::move(due)) {}
    ~CallbackPacer() override {
        if (first_) {
            first_->cancel();
        }
    }
    CallbackPacer(const CallbackPacer&) = delete;
    CallbackPacer& operator=(const CallbackPacer&) = delete;

    void request() override {
        if (!wasPresented_) {
            // A surface that shows nothing yet is called back for nothing.
            if (!first_) {
                first_ = loop_.asyncAfter(0, [this] {
                    first_ = nullptr;
                    due_();
                });
            }
        } else if (!isCommitted_) {
            ask();
            wl_surface_commit(surface_);
            wl_display_flush(display_);
            isCommitted_ = true;
        }
    }

    void willPresent() override {
        wasPresented_ = true;
        if (first_) {
            first_->cancel();
            first_ = nullptr;
        }
        ask();
    }

    void setRate(double) override {}

  private:
    void ask() {
        if (!callback_) {
            callback_.reset(wl_surface_frame(surface_));
            static constexpr wl_callback_listener kListener{.done = called};
            wl_callback_add_listener(callback_.get(), &kListener, this);
        }
    }

    static void called(void* data, wl_callback*, std::uint32_t) {
        auto* const self = static_cast<CallbackPacer*>(data);
        self->callback_ = nullptr;
        self->isCommitted_ = false;
        self->due_();
    }

    MainLoop& loop_;
    wl_display* display_;
    wl_surface* surface_;
    std::function<void()> due_;
    std::unique_ptr<wl_callback, DestroyCallback> callback_;
    /// Stands in for the callback until something was presented.
    std::shared_ptr<WorkItem> first_;
    bool wasPresented_ = false;
    /// We committed the request ourselves. One that rode on a present may have stayed behind, when
    /// the present failed.
    bool isCommitted_ = false;
};

class WaylandDisplay : public NativeDisplay {
  public:
    explicit WaylandDisplay(wl_display* display) : display_(display) {}

    int descriptor() const override { return wl_display_get_fd(display_); }
    bool isLost() const override { return wl_display_get_error(display_) != 0; }
    bool canCloseWhenLost() const override { return true; }
    void willClose() override {}

    std::unique_ptr<FramePacer> makePacer(MainLoop& loop, SDL_Window& window,
                                          std::function<void()> due) override {
        return std::make_unique<CallbackPacer>(loop, display_, infoOf(window).info.wl.surface,
                                               std::move(due));
    }

    // A compositor tells nobody what covers a window: it calls back for no frames of it.
    void watchObscurity(SDL_Window&) override {}
    std::optional<bool> isObscured(SDL_Window&, const SDL_Event&) const override {
        return std::nullopt;
    }

  private:
    wl_display* display_;
};

} // namespace

std::unique_ptr<NativeDisplay> makeWaylandDisplay(SDL_Window& window) {
    return std::make_unique<WaylandDisplay>(infoOf(window).info.wl.display);
}

} // namespace vantor::agent
