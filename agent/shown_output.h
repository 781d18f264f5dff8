#pragma once
// An output with what is on it: the display that shows, and the wallpaper that is asked for. Main
// thread.

#include "agent/choices.h"
#include "agent/configuration/configuration.h"
#include "agent/control/controller.h"
#include "agent/display.h"
#include "agent/output/output.h"
#include "agent/wallpaper.h"

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vantor::agent {

/// What holds for every output.
struct SharedState {
    std::string presentationMode;
    /// Why nothing runs, of OutputStatus::pauses.
    std::vector<std::string> pauses;
};

class ShownOutput {
  public:
    /// `display` is its number, `wallpaper` the instance that was made for it.
    ShownOutput(Output& output, std::uint32_t number, std::unique_ptr<Display> display,
                std::unique_ptr<Wallpaper> wallpaper);
    ShownOutput(const ShownOutput&) = delete;
    ShownOutput& operator=(const ShownOutput&) = delete;

    Output& output() const { return output_; }
    std::uint32_t number() const { return number_; }
    const std::string& connector() const { return output_.description().connector; }
    Display& display() const { return *display_; }
    Wallpaper& wallpaper() const { return *wallpaper_; }
    const Choices::Shown& shown() const { return shown_; }

    /// Works out what the output should be now, and lets the display run or rest.
    void apply(const SharedState& shared, Choices::Shown shown, const OutputSettings& settings,
               bool pauseWhenCovered);
    /// Tells the extension what differs.
    void tell(ExtensionSession& session) { wallpaper_->tell(session, state_); }

    OutputStatus status(double now) const;

    /// The remote context that the display was last given; nothing before, or when that one ended.
    std::optional<std::uint32_t> hosted() const { return hosted_; }
    void setHosted(std::optional<std::uint32_t> contextID) { hosted_ = contextID; }

  private:
    Output& output_;
    std::uint32_t number_;
    std::unique_ptr<Display> display_;
    std::unique_ptr<Wallpaper> wallpaper_;
    Choices::Shown shown_;
    WallpaperState state_;
    std::vector<std::string> pauses_;
    std::optional<std::uint32_t> hosted_;
};

} // namespace vantor::agent
