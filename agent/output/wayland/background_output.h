#pragma once
// One output's background as the agent sees it. Main thread.

#include "agent/output/output.h"
#include "agent/output/wayland/background_surface.h"
#include "agent/output/wayland/connection.h"

#include <string>

namespace vantor::agent::wayland {

class BackgroundOutput final : public Output {
  public:
    BackgroundOutput(Connection& connection, const Globals& globals, wl_output* output)
        : connection_(connection), surface_(globals, output) {}

    const OutputDescription& description() const override { return description_; }
    Visibility visibility() const override { return visibility_; }
    VkSurfaceKHR makeSurface(VkInstance instance) override;
    bool isInMemory() const override { return false; }
    void requestRefresh() override;
    void willPresent() override;

    /// What frames are presented on.
    wl_surface* surface() const { return surface_.surface(); }
    bool isClosed() const { return surface_.isClosed(); }
    /// Nothing before the first configuration.
    std::optional<SurfaceFacts> facts() const { return surface_.facts(); }

    /// Takes in what holds now; true when the agent sees a difference.
    bool settle(const OutputDescription& description, const SurfaceGeometry& geometry,
                Visibility visibility);
    /// Whether the moment that was asked for is there.
    bool takeRefresh();

  private:
    enum class Refresh {
        notAsked,
        /// Of the compositor.
        asked,
        /// Nothing was presented yet, so the compositor would not answer.
        due,
        /// The compositor is asked when the output is on again. Of one that is covered it is asked
        /// at once: it knows best whether something shows through.
        postponed,
    };

    /// Of the compositor, where that is of use now.
    void ask();

    Connection& connection_;
    BackgroundSurface surface_;
    OutputDescription description_;
    SurfaceGeometry geometry_;
    Visibility visibility_ = Visibility::visible;
    Refresh refresh_ = Refresh::notAsked;
    /// Whether the surface has a picture, or is about to.
    bool hasPresented_ = false;
    /// Whether what the compositor was asked is in no commit of ours.
    bool ridesOnPresent_ = false;
};

} // namespace vantor::agent::wayland
