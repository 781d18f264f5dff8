#pragma once
// One display of the agent: what it shows and the picture that is composited for it. Main thread.

#include "agent/host/compositor.h"
#include "agent/host/hosted_context.h"
#include "agent/run_options.h"
#include "platform/geometry.h"
#include "platform/linux/main_loop.h"
#include "platform/uuid.h"

#include <cstdint>
#include <filesystem>
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
    /// Null when the GPU has no memory for its picture.
    static std::unique_ptr<Display> create(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu,
                                           std::uint32_t number, const DisplayMode& mode,
                                           std::string choice);
    Display(const Display&) = delete;
    Display& operator=(const Display&) = delete;

    std::uint32_t number() const { return number_; }
    const UUID& wallpaper() const { return wallpaper_; }
    const DisplayMode& mode() const { return mode_; }
    const std::string& choice() const { return choice_; }
    /// Points.
    Size size() const {
        return {.width = mode_.width / mode_.scale, .height = mode_.height / mode_.scale};
    }

    /// Shows the remote context behind that socket.
    void host(FileDescriptor socket);

    /// What a refresh of the display does: shows what changed, gives back what is no longer shown.
    void refresh();

    /// Frames of the extension that were shown.
    std::uint64_t framesShown() const { return framesShown_; }
    /// Media time of the first and the last of them, in seconds.
    std::optional<double> firstFrame() const { return firstFrame_; }
    double lastFrame() const { return lastFrame_; }
    /// Why nothing (more) is shown, if so.
    const std::string& trouble() const { return trouble_; }
    void setTrouble(std::string trouble) { trouble_ = std::move(trouble); }
    /// The wallpaper is given up: that its context ends is no trouble any more.
    void release() { released_ = true; }

    /// What the display shows now, as BGRA rows without gaps; nothing when it cannot be read.
    [[nodiscard]] std::optional<std::vector<std::uint8_t>> pixels();
    /// Writes what the display shows now. False when it could not be written.
    [[nodiscard]] bool writePNG(Images& images, const std::filesystem::path& file);

  private:
    Display(MainLoop& loop, std::shared_ptr<vulkan::Context> gpu, std::uint32_t number,
            const DisplayMode& mode, std::string choice);

    MainLoop& loop_;
    std::shared_ptr<vulkan::Context> gpu_;
    std::uint32_t number_;
    UUID wallpaper_ = UUID::random();
    DisplayMode mode_;
    std::string choice_;
    std::unique_ptr<HostedContext> context_;
    /// After the context: what it composites last may still read the context's images.
    std::unique_ptr<Compositor> compositor_;
    bool changed_ = false;
    bool frameWaits_ = false;
    std::uint64_t framesShown_ = 0;
    std::optional<double> firstFrame_;
    double lastFrame_ = 0;
    std::string trouble_;
    bool released_ = false;
};

} // namespace vantor::agent
