#pragma once
// One output of the compositor and the background on it. Main thread.

#include "agent/output/wayland/background_output.h"
#include "agent/output/wayland/output_info.h"
#include "agent/output/wayland/output_power.h"
#include "agent/output/wayland/toplevels.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vantor::agent::wayland {

class Monitor {
  public:
    Monitor(MainLoop& loop, Connection& connection, const Globals& globals,
            const Globals::Name& name);
    ~Monitor();
    Monitor(const Monitor&) = delete;
    Monitor& operator=(const Monitor&) = delete;

    /// The registry's number for the output.
    std::uint32_t number() const { return number_; }
    wl_output* output() const { return info_.output(); }
    /// What the compositor calls the output; nothing before it has told everything.
    std::optional<std::string> toldName() const;
    /// What the agent knows the output by; empty until it has one.
    const std::string& connector() const { return connector_; }
    void setConnector(const std::string& connector) { connector_ = connector; }

    /// Takes in what the compositor has told, and tells the agent. With a connector only.
    void settle(const OutputEvents& events, const Toplevels& toplevels);
    /// Tells the agent that the output goes.
    void withdraw(const OutputEvents& events);

  private:
    /// The numbers make no picture: the agent does without the output until others come.
    void refuse(const OutputEvents& events, const std::string& sentence);
    /// Makes the background again after a while.
    void retryLater();
    OutputDescription describe(const SurfaceGeometry& geometry) const;

    MainLoop& loop_;
    Connection& connection_;
    const Globals& globals_;
    const std::uint32_t number_;
    OutputInfo info_;
    OutputPower power_;
    std::string connector_;
    /// Null before the compositor has described the output, and while `retry_` waits.
    std::unique_ptr<BackgroundOutput> background_;
    bool isAnnounced_ = false;
    /// The last sentence about numbers that make no picture.
    std::string refusal_;
    std::shared_ptr<WorkItem> retry_;
    /// Seconds.
    double retryDelay_;
};

} // namespace vantor::agent::wayland
