#pragma once
// One output with a wallpaper on it: shows the frames of a hosted context, and tells when the next
// one is wanted. Main thread.

#include "agent/host/compositor.h"
#include "agent/host/hosted_context.h"
#include "agent/output/output.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <array>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantor {
class Images;
}

namespace vantor::agent {

class Display {
  public:
    /// `tick` tells the extension that the output is about to show a frame. The output outlives the
    /// display. The error is a sentence.
    static Result<std::unique_ptr<Display>, std::string>
    create(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu, Output& output,
           std::function<void()> tick);
    ~Display();
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    /// Shows the remote context behind that socket as soon as it has something to show; until then
    /// what was shown stays.
    void host(FileDescriptor socket);
    /// The wallpaper is given up: that its context ends is no trouble any more.
    void release() { released_ = true; }

    /// At which the extension's display links run, in ticks a second; 0 when none runs.
    void setLinkRate(std::uint32_t rate);
    /// Frames a second at most.
    void setMaxFps(std::optional<double> maxFps);
    /// Whether ticks are sent at all.
    void setRunning(bool running);

    /// The output's description, visibility or overlay is another one.
    void outputChanged();
    /// The output can take a frame: gives back what is no longer shown, ticks when it is time,
    /// shows what changed, and asks for the next refresh when there is a reason to.
    void refresh();

    /// Frames of the extension that were shown: since the start, and in the second before `now`.
    std::uint64_t framesShown() const { return framesShown_; }
    double framesPerSecond(double now) const;
    /// Whether ticks have gone out for so many seconds without one frame; once for each such time.
    [[nodiscard]] bool isFrameOverdue(double seconds);
    /// Media time of the first and the last of them, in seconds.
    std::optional<double> firstFrame() const { return firstFrame_; }
    double lastFrame() const { return lastFrame_; }
    /// Why nothing (more) is shown, if so.
    const std::string& trouble() const { return trouble_; }
    void setTrouble(std::string trouble) { trouble_ = std::move(trouble); }

    /// What the display shows now, as BGRA rows without gaps; nothing when it cannot be read, as
    /// that of a screen.
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> pixels();
    /// Writes what the display shows now. False when it could not be written.
    [[nodiscard]] bool writePNG(Images& images, const std::filesystem::path& file);

  private:
    Display(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu, Output& output,
            std::function<void()> tick);
    bool makeCanvas();
    void contextChanged();
    /// Shows `next_` from now on, if it has something to show.
    void takeNext();
    /// Gives back what the finished composition used last.
    void takeBack();
    void show();
    void noteFrame();
    /// Ticks when it is time.
    void tickIfDue();
    void awaitRefresh();
    /// Between two ticks, in seconds; nothing when there are none.
    std::optional<double> period() const;

    MainLoop& loop_;
    std::shared_ptr<vulkan::Context> gpu_;
    Output& output_;
    std::function<void()> tick_;
    std::unique_ptr<Canvas> canvas_;
    /// Contexts before the compositor: what it composites last may still read their images.
    std::unique_ptr<HostedContext> context_;
    std::unique_ptr<HostedContext> next_;
    std::unique_ptr<HostedContext> last_;
    std::unique_ptr<Compositor> compositor_;
    /// Waits while ticks come slower than refreshes.
    std::unique_ptr<Alarm> alarm_;
    std::uint32_t linkRate_ = 0;
    std::optional<double> maxFps_;
    bool running_ = true;
    bool awaitsRefresh_ = false;
    /// Media time of the next tick.
    double due_ = 0;
    bool changed_ = false;
    bool frameWaits_ = false;
    /// Media time of the first tick since a frame came; nothing when there was none.
    std::optional<double> tickingSince_;
    std::uint64_t framesShown_ = 0;
    /// Media times of the last frames; a ring.
    std::array<double, 256> shownAt_{};
    std::optional<double> firstFrame_;
    double lastFrame_ = 0;
    std::string trouble_;
    bool released_ = false;
};

} // namespace vantor::agent
