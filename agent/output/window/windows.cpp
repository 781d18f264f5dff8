#include "agent/output/window/windows.h"

#include "agent/output/pacing/turn_end.h"
#include "agent/output/window/key_table.h"
#include "agent/output/window/native_display.h"
#include "agent/output/window/wayland_probe.h"
#include "agent/output/window/window_output.h"

#define SDL_MAIN_HANDLED
#include <SDL.h>
#include <algorithm>
#include <sys/epoll.h>
#include <utility>

namespace vantor::agent {
namespace {

/// SDL's video, from `start` to destruction.
class Video {
  public:
    Video() = default;
    ~Video() {
        if (isStarted_) {
            SDL_QuitSubSystem(SDL_INIT_VIDEO);
        }
    }
    Video(const Video&) = delete;
    Video& operator=(const Video&) = delete;

    /// The sentence of a failure; empty for none.
    std::string start() {
        if (SDL_WasInit(SDL_INIT_VIDEO) != 0) {
            return "SDL shows windows already";
        }
        // What these would do is the agent's or the desktop's own affair.
        SDL_SetHint(SDL_HINT_NO_SIGNAL_HANDLERS, "1");
        SDL_SetHint(SDL_HINT_VIDEO_ALLOW_SCREENSAVER, "1");
        SDL_SetHint(SDL_HINT_QUIT_ON_LAST_WINDOW_CLOSE, "0");
        SDL_SetHint(SDL_HINT_VIDEO_X11_NET_WM_BYPASS_COMPOSITOR, "0");
        SDL_SetHint(SDL_HINT_VIDEO_MINIMIZE_ON_FOCUS_LOSS, "0");
        SDL_SetHint(SDL_HINT_APP_NAME, "vantor-agent");
        const std::string whyNot = whyNotWayland();
        // SDL itself prefers X11.
        SDL_SetHint(SDL_HINT_VIDEODRIVER, whyNot.empty() ? "wayland,x11" : "x11");
        SDL_SetMainReady();
        isStarted_ = SDL_InitSubSystem(SDL_INIT_VIDEO) == 0;
        if (!isStarted_) {
            return std::string("no display server shows windows: ") + SDL_GetError() +
                   (whyNot.empty() ? "" : "; " + whyNot);
        }
        // Keys are keys here, for no input method to compose.
        SDL_StopTextInput();
        return {};
    }

    /// Leaves it to the end of the process.
    void abandon() { isStarted_ = false; }

  private:
    bool isStarted_ = false;
};

class Windows final : public OutputBackend {
  public:
    Windows(MainLoop& loop, OutputEvents events) : loop_(loop), events_(std::move(events)) {}
    ~Windows() override {
        if (firstTurn_) {
            firstTurn_->cancel();
        }
        if (native_) {
            native_->willClose();
        }
    }
    Windows(const Windows&) = delete;
    Windows& operator=(const Windows&) = delete;

    std::string_view kind() const override { return "window"; }

    /// The sentence of a failure; empty for none.
    std::string open(const std::vector<WindowOptions>& options) {
        if (std::string failure = video_.start(); !failure.empty()) {
            return failure;
        }
        for (const WindowOptions& each : options) {
            outputs_.push_back(
                WindowOutput::create(each, "window-" + std::to_string(outputs_.size() + 1)));
            if (!outputs_.back()) {
                outputs_.pop_back();
                return std::string("the display server gives no window: ") + SDL_GetError();
            }
        }
        native_ = NativeDisplay::of(outputs_.front()->window());
        if (!native_) {
            return std::string("SDL's video driver \"") + SDL_GetCurrentVideoDriver() +
                   "\" is neither X11's nor Wayland's";
        }
        for (const auto& output : outputs_) {
            output->attach(loop_, *native_, [this, it = output.get()] { events_.refresh(*it); });
        }
        listen();
        return {};
    }

  private:
    void listen() {
        // Events are taken at the end of every turn, since Vulkan reads from the connection too and
        // keeps what is not its own for SDL.
        watch_ = loop_.watch(native_->descriptor(), EPOLLIN, [this](std::uint32_t events) {
            hasHungUp_ = (events & (EPOLLHUP | EPOLLERR)) != 0;
        });
        turnEnd_.emplace(loop_, [this] { pump(); });
        firstTurn_ = loop_.asyncAfter(0, [this] { announce(); });
    }

    void announce() {
        isAnnounced_ = true;
        for (const auto& output : outputs_) {
            output->update();
            events_.added(*output);
        }
    }

    void pump() {
        if (!isAnnounced_) {
            return;
        }
        // What is done about an event may read further ones from the connection.
        bool hasHappened = true;
        while (hasHappened && !native_->isLost()) {
            SDL_PumpEvents();
            hasHappened = takeEvents();
            hasHappened |= tellChanges();
        }
        if (native_->isLost() || hasHungUp_) {
            end();
        }
    }

    /// Whether there was one.
    bool takeEvents() {
        bool hasTaken = false;
        SDL_Event event;
        while (SDL_PeepEvents(&event, 1, SDL_GETEVENT, SDL_FIRSTEVENT, SDL_LASTEVENT) > 0) {
            take(event);
            hasTaken = true;
        }
        return hasTaken;
    }

    /// Whether there was one.
    bool tellChanges() {
        bool hasTold = false;
        for (const auto& output : outputs_) {
            if (output->update()) {
                events_.changed(*output);
                hasTold = true;
            }
        }
        return hasTold;
    }

    void take(const SDL_Event& event) {
        switch (event.type) {
        case SDL_WINDOWEVENT:
            if (WindowOutput* const output = outputOf(event.window.windowID)) {
                if (event.window.event == SDL_WINDOWEVENT_CLOSE) {
                    close(*output);
                } else {
                    output->take(event.window);
                }
            }
            break;
        case SDL_KEYDOWN:
            if (WindowOutput* const output = outputOf(event.key.windowID)) {
                press(*output, event.key);
            }
            break;
        case SDL_SYSWMEVENT:
            for (const auto& output : outputs_) {
                if (const auto isObscured = native_->isObscured(output->window(), event)) {
                    output->setObscured(*isObscured);
                }
            }
            break;
        default:
            break;
        }
    }

    void press(WindowOutput& output, const SDL_KeyboardEvent& key) {
        constexpr int kChords = KMOD_CTRL | KMOD_ALT | KMOD_GUI;
        const auto action = actionOf(key.keysym.sym);
        if (!action || key.repeat != 0 || (key.keysym.mod & kChords) != 0) {
            return;
        }
        if (const auto* const command = std::get_if<WindowCommand>(&*action)) {
            events_.command(output, *command);
            return;
        }
        switch (std::get<WindowAction>(*action)) {
        case WindowAction::toggleHelp:
            output.showHelp(!output.showsHelp());
            break;
        case WindowAction::toggleFullScreen:
            output.toggleFullScreen();
            break;
        }
    }

    void close(WindowOutput& output) {
        if (outputs_.size() == 1) {
            events_.command(output, WindowCommand::quit);
            return;
        }
        events_.removed(output);
        std::erase_if(outputs_, [&](const auto& each) { return each.get() == &output; });
    }

    void end() {
        watch_ = nullptr;
        turnEnd_.reset();
        for (const auto& output : outputs_) {
            events_.removed(*output);
        }
        if (!native_->canCloseWhenLost()) {
            for (const auto& output : outputs_) {
                output->abandonWindow();
            }
            video_.abandon();
        }
        outputs_.clear();
        native_ = nullptr;
        // It may destroy this.
        const auto ended = events_.ended;
        ended("the display server closed the connection");
    }

    WindowOutput* outputOf(Uint32 windowID) const {
        const auto found = std::find_if(outputs_.begin(), outputs_.end(), [&](const auto& each) {
            return SDL_GetWindowID(&each->window()) == windowID;
        });
        return found == outputs_.end() ? nullptr : found->get();
    }

    MainLoop& loop_;
    OutputEvents events_;
    // In the order in which they build on each other.
    Video video_;
    std::unique_ptr<NativeDisplay> native_;
    std::vector<std::unique_ptr<WindowOutput>> outputs_;
    std::unique_ptr<DescriptorWatch> watch_;
    std::optional<TurnEnd> turnEnd_;
    std::shared_ptr<WorkItem> firstTurn_;
    bool isAnnounced_ = false;
    bool hasHungUp_ = false;
};

} // namespace

Result<std::unique_ptr<OutputBackend>, std::string>
makeWindows(MainLoop& loop, const std::vector<WindowOptions>& windows, OutputEvents events) {
    if (windows.empty()) {
        return Failure{std::string("there is no window to open")};
    }
    auto made = std::make_unique<Windows>(loop, std::move(events));
    std::string failure = made->open(windows);
    if (!failure.empty()) {
        return Failure{std::move(failure)};
    }
    return std::unique_ptr<OutputBackend>(std::move(made));
}

} // namespace vantor::agent
