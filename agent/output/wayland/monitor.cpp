#include "agent/output/wayland/monitor.h"

#include <algorithm>
#include <cstdio>
#include <utility>

namespace vantor::agent::wayland {
namespace {

// A background that the compositor closed is made again, later each time: the output is usually
// about to go as well.
constexpr double kFirstRetrySeconds = 0.25;
constexpr double kLastRetrySeconds = 64;

// What a refresh rate is believed to be, in hertz.
constexpr double kUsualRate = 60;
constexpr double kHighestRate = 1000;

void complain(const std::string& sentence) {
    std::fprintf(stderr, "vantor-agent: %s\n", sentence.c_str());
}

} // namespace

Monitor::Monitor(MainLoop& loop, Connection& connection, const Globals& globals,
                 const Globals::Name& name)
    : loop_(loop), connection_(connection), globals_(globals), number_(name.number),
      info_(globals.bindOutput(name), globals.outputManager()),
      power_(globals.outputPowers(), info_.output()), retryDelay_(kFirstRetrySeconds) {}

Monitor::~Monitor() {
    if (retry_) {
        retry_->cancel();
    }
}

std::optional<std::string> Monitor::toldName() const {
    if (!info_.state()) {
        return std::nullopt;
    }
    const std::string& name = info_.state()->name;
    return name.empty() ? "output-" + std::to_string(number_) : name;
}

void Monitor::settle(const OutputEvents& events, const Toplevels& toplevels) {
    if (!info_.state() || retry_) {
        return;
    }
    if (!background_) {
        background_ = std::make_unique<BackgroundOutput>(connection_, globals_, info_.output());
    }
    if (background_->isClosed()) {
        withdraw(events);
        retryLater();
        return;
    }
    const auto facts = background_->facts();
    if (!facts) {
        return;
    }
    const auto geometry = fitSurface(*info_.state(), *facts);
    if (!geometry) {
        refuse(events, geometry.error());
        return;
    }
    const Visibility seen =
        toplevels.cover(info_.output()) ? Visibility::covered : Visibility::visible;
    const bool isOther = background_->settle(describe(geometry.value()), geometry.value(),
                                             power_.isOn() ? seen : Visibility::off);
    if (!std::exchange(isAnnounced_, true)) {
        events.added(*background_);
    } else if (isOther) {
        events.changed(*background_);
    }
    if (background_->takeRefresh()) {
        events.refresh(*background_);
    }
}

void Monitor::withdraw(const OutputEvents& events) {
    if (std::exchange(isAnnounced_, false)) {
        events.removed(*background_);
    }
    background_.reset();
}

void Monitor::refuse(const OutputEvents& events, const std::string& sentence) {
    if (std::exchange(refusal_, sentence) != sentence) {
        complain("output " + connector_ + " has no wallpaper: " + sentence);
    }
    if (isAnnounced_) {
        // The next one waits for better numbers without a picture.
        withdraw(events);
        connection_.wake();
    }
}

void Monitor::retryLater() {
    retry_ = loop_.asyncAfter(retryDelay_, [this] {
        retry_.reset();
        connection_.wake();
    });
    retryDelay_ = std::min(retryDelay_ * 2, kLastRetrySeconds);
}

OutputDescription Monitor::describe(const SurfaceGeometry& geometry) const {
    const OutputState& state = *info_.state();
    const double rate = state.refresh / 1000.0;
    return {
        .connector = connector_,
        .make = state.make,
        .model = state.model,
        .width = geometry.width,
        .height = geometry.height,
        .scale = geometry.scale,
        .refreshRate = rate > 0 && rate <= kHighestRate ? rate : kUsualRate,
    };
}

} // namespace vantor::agent::wayland
