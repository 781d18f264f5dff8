#include "agent/output/wayland/wayland_background.h"

#include "agent/output/wayland/connection.h"
#include "agent/output/wayland/globals.h"
#include "agent/output/wayland/monitor.h"
#include "agent/output/wayland/toplevels.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vantor::agent {
namespace wayland {
namespace {

class WaylandBackground final : public OutputBackend {
  public:
    WaylandBackground(MainLoop& loop, OutputEvents events, std::unique_ptr<Connection> connection,
                      std::unique_ptr<Globals> globals)
        : loop_(loop), events_(std::move(events)), connection_(std::move(connection)),
          globals_(std::move(globals)), toplevels_(*globals_) {
        connection_->start({
            .settle = [this] { settle(); },
            .ended = [this](const std::string& why) { end(why); },
        });
    }

    std::string_view kind() const override { return "background"; }

  private:
    void settle() {
        removeWithdrawn();
        addAnnounced();
        toplevels_.settle();
        for (const auto& monitor : monitors_) {
            nameOnce(*monitor);
            if (!monitor->connector().empty()) {
                monitor->settle(events_, toplevels_);
            }
        }
    }

    void removeWithdrawn() {
        std::erase_if(monitors_, [&](const auto& monitor) {
            const bool stays = std::ranges::any_of(globals_->outputs(), [&](const auto& name) {
                return name.number == monitor->number();
            });
            if (!stays) {
                monitor->withdraw(events_);
                toplevels_.forget(monitor->output());
            }
            return !stays;
        });
    }

    void addAnnounced() {
        for (const Globals::Name& name : globals_->outputs()) {
            const bool isKnown = std::ranges::any_of(
                monitors_, [&](const auto& monitor) { return monitor->number() == name.number; });
            if (!isKnown) {
                monitors_.push_back(
                    std::make_unique<Monitor>(loop_, *connection_, *globals_, name));
            }
        }
    }

    /// An output keeps its first name, which no other one has at that moment.
    void nameOnce(Monitor& monitor) {
        const auto told = monitor.toldName();
        if (!told || !monitor.connector().empty()) {
            return;
        }
        const bool isTaken = std::ranges::any_of(
            monitors_, [&](const auto& other) { return other->connector() == *told; });
        monitor.setConnector(isTaken ? *told + "#" + std::to_string(monitor.number()) : *told);
    }

    void end(const std::string& why) {
        for (const auto& monitor : monitors_) {
            monitor->withdraw(events_);
        }
        monitors_.clear();
        // The agent may let go of this backend in it.
        const auto ended = std::move(events_.ended);
        ended(why);
    }

    MainLoop& loop_;
    OutputEvents events_;
    std::unique_ptr<Connection> connection_;
    std::unique_ptr<Globals> globals_;
    Toplevels toplevels_;
    std::vector<std::unique_ptr<Monitor>> monitors_;
};

} // namespace
} // namespace wayland

Result<std::unique_ptr<OutputBackend>, std::string> makeWaylandBackground(MainLoop& loop,
                                                                          OutputEvents events) {
    auto opened = wayland::Connection::open(loop);
    if (!opened) {
        return Failure{opened.error()};
    }
    auto connection = std::move(opened).value();
    auto globals = std::make_unique<wayland::Globals>(connection->display());
    if (const auto failure = connection->roundTrip()) {
        return Failure{*failure};
    }
    if (globals->layerShell() == nullptr) {
        return Failure{std::string(
            "the compositor offers no layer shell, so nothing can lie below its windows")};
    }
    if (globals->compositor() == nullptr) {
        return Failure{std::string("the compositor offers no surfaces")};
    }
    return std::unique_ptr<OutputBackend>(std::make_unique<wayland::WaylandBackground>(
        loop, std::move(events), std::move(connection), std::move(globals)));
}

} // namespace vantor::agent
