#include "agent/shown_output.h"

#include <algorithm>
#include <utility>

namespace vantor::agent {
namespace {

/// In which reasons are told.
constexpr std::string_view kPauseOrder[] = {"asked",   "covered", "off",
                                            "battery", "asleep",  "session"};

std::vector<std::string> pausesOf(const SharedState& shared, Visibility visibility,
                                  bool pauseWhenCovered) {
    std::vector<std::string> pauses;
    for (const std::string_view reason : kPauseOrder) {
        const bool isOwn =
            (reason == "covered" && visibility == Visibility::covered && pauseWhenCovered) ||
            (reason == "off" && visibility == Visibility::off);
        if (isOwn ||
            std::find(shared.pauses.begin(), shared.pauses.end(), reason) != shared.pauses.end()) {
            pauses.emplace_back(reason);
        }
    }
    return pauses;
}

} // namespace

ShownOutput::ShownOutput(Output& output, std::uint32_t number, std::unique_ptr<Display> display,
                         std::unique_ptr<Wallpaper> wallpaper)
    : output_(output), number_(number), display_(std::move(display)),
      wallpaper_(std::move(wallpaper)) {}

void ShownOutput::apply(const SharedState& shared, Choices::Shown shown,
                        const OutputSettings& settings, bool pauseWhenCovered) {
    const OutputDescription& output = output_.description();
    shown_ = std::move(shown);
    pauses_ = pausesOf(shared, output_.visibility(), pauseWhenCovered);
    state_ = {
        .choice = shown_.entry,
        .size = {.width = output.width / output.scale, .height = output.height / output.scale},
        .scale = output.scale,
        .displayID = number_,
        .presentationMode = shared.presentationMode,
        .activityState = pauses_.empty() ? "active" : "suspended"};
    display_->setMaxFps(settings.maxFps);
    display_->setRunning(pauses_.empty());
}

OutputStatus ShownOutput::status(double now) const {
    const OutputDescription& output = output_.description();
    return {.display = number_,
            .connector = output.connector,
            .make = output.make,
            .model = output.model,
            .width = output.width,
            .height = output.height,
            .scale = output.scale,
            .refreshRate = output.refreshRate,
            .choice = shown_.choice,
            .setAside = shown_.setAside,
            .presentationMode = state_.presentationMode,
            .activityState = state_.activityState,
            .pauses = pauses_,
            .framesPerSecond = display_->framesPerSecond(now),
            .frames = display_->framesShown(),
            .trouble = display_->trouble()};
}

} // namespace vantor::agent
