#pragma once
// What an output backend tells, written down as it comes, and the loop that it tells it from.

#include "agent/output/output.h"
#include "platform/linux/main_loop.h"

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantor::tests {

class RecordedOutputs {
  public:
    /// For a backend that lives no longer than this.
    agent::OutputEvents events() {
        return {
            .added =
                [this](agent::Output& output) {
                    present.push_back(&output);
                    note("added", output);
                    if (onAdded) {
                        onAdded(output);
                    }
                },
            .changed = [this](agent::Output& output) { note("changed", output); },
            .removed =
                [this](agent::Output& output) {
                    note("removed", output);
                    if (onRemoved) {
                        onRemoved(output);
                    }
                    std::erase(present, &output);
                },
            .refresh =
                [this](agent::Output& output) {
                    ++refreshes[output.description().connector];
                    if (onRefresh) {
                        onRefresh(output);
                    }
                },
            .command = {},
            .ended = [this](const std::string& why) { ended = why; },
        };
    }

    /// The output of that name, or null.
    agent::Output* output(const std::string& connector) const {
        const auto found = std::ranges::find_if(present, [&](const agent::Output* output) {
            return output->description().connector == connector;
        });
        return found == present.end() ? nullptr : *found;
    }
    /// Pixels and scale, "1920x1080@1.5"; empty without such an output.
    std::string size(const std::string& connector) const {
        const agent::Output* const found = output(connector);
        if (found == nullptr) {
            return {};
        }
        std::string scale = std::to_string(found->description().scale);
        scale.erase(scale.find_last_not_of('0') + 1);
        return std::to_string(found->description().width) + "x" +
               std::to_string(found->description().height) + "@" +
               (scale.ends_with('.') ? scale.substr(0, scale.size() - 1) : scale);
    }
    std::optional<agent::Visibility> visibility(const std::string& connector) const {
        const agent::Output* const found = output(connector);
        return found == nullptr ? std::nullopt : std::optional(found->visibility());
    }

    /// Runs the loop until the condition holds; false when it does not within the patience.
    bool eventually(const std::function<bool()>& holds, double seconds = 60) {
        const auto end = std::chrono::steady_clock::now() + std::chrono::duration<double>(seconds);
        while (!holds() && std::chrono::steady_clock::now() < end) {
            pass(0.002);
        }
        return holds();
    }
    /// Runs the loop that long.
    void pass(double seconds) {
        loop.asyncAfter(seconds, [this] { loop.stop(0); });
        loop.run();
    }

    MainLoop loop;
    /// "added DP-1", in the order of their coming; refreshes are counted below.
    std::vector<std::string> log;
    std::vector<agent::Output*> present;
    std::map<std::string, int> refreshes;
    std::optional<std::string> ended;
    std::function<void(agent::Output&)> onAdded;
    std::function<void(agent::Output&)> onRemoved;
    std::function<void(agent::Output&)> onRefresh;

  private:
    void note(const std::string& event, const agent::Output& output) {
        log.push_back(event + " " + output.description().connector);
    }
};

} // namespace vantor::tests
