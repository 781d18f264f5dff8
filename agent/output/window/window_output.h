#pragma once
// One window as an output. Main thread.

#include "agent/host/hosted_context.h"
#include "agent/output/output.h"
#include "agent/output/window/frame_pacer.h"
#include "agent/output/window/native_display.h"
#include "agent/output/window/windows.h"

#include <SDL_events.h>
#include <functional>
#include <memory>
#include <optional>

namespace vantor::agent {

class WindowOutput final : public Output {
  public:
    /// Null, with SDL's error set, when the display server gives no window that Vulkan can show
    /// frames on.
    static std::unique_ptr<WindowOutput> create(const WindowOptions& options,
                                                std::string connector);
    ~WindowOutput() override;
    WindowOutput(const WindowOutput&) = delete;
    WindowOutput& operator=(const WindowOutput&) = delete;

    /// To be called once. `refresh` is called from the loop.
    void attach(MainLoop& loop, NativeDisplay& native, std::function<void()> refresh);

    const OutputDescription& description() const override { return description_; }
    Visibility visibility() const override;
    VkSurfaceKHR makeSurface(VkInstance instance) override;
    bool isInMemory() const override { return false; }
    void requestRefresh() override;
    void willPresent() override;
    const Picture* overlay() const override;

    SDL_Window& window() const { return *window_; }
    /// Leaves the window to the end of the process.
    void abandonWindow() { static_cast<void>(window_.release()); }
    void take(const SDL_WindowEvent& event);
    void setObscured(bool isObscured);
    void toggleFullScreen();
    void showHelp(bool isShown);
    bool showsHelp() const { return isHelpWanted_; }

    /// Brings what the methods above tell up to date with the window; whether they tell anything
    /// else than after the last call, or the display server has lost the picture.
    bool update();

  private:
    /// What was told.
    struct Told {
        OutputDescription description;
        Visibility visibility = Visibility::visible;
        bool isHelpShown = false;

        bool operator==(const Told&) const = default;
    };
    struct WindowDeleter {
        void operator()(SDL_Window* window) const { SDL_DestroyWindow(window); }
    };

    explicit WindowOutput(SDL_Window* window) : window_(window) {}
    OutputDescription describe() const;
    void due();

    std::unique_ptr<SDL_Window, WindowDeleter> window_;
    /// Goes before the window that it paces.
    std::unique_ptr<FramePacer> pacer_;
    MainLoop* loop_ = nullptr;
    /// Hides the help some time after the first frame.
    std::shared_ptr<WorkItem> helpEnd_;
    std::function<void()> refresh_;
    OutputDescription description_;
    std::optional<Told> told_;
    /// Something happened to the window since.
    bool isStale_ = true;
    Picture help_;
    bool isHelpWanted_ = true;
    bool isHidden_ = false;
    bool isExposed_ = false;
    bool isObscured_ = false;
    bool isRefreshWanted_ = false;
};

} // namespace vantor::agent
