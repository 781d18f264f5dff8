#pragma once
// What a test sees of an output backend: the outputs that there are, and how often what was told.

#include "agent/output/output.h"
#include "platform/linux/main_loop.h"

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vantor {

class OutputRecorder {
  public:
    agent::OutputEvents events() {
        return {
            .added = [this](agent::Output& output) { outputs.push_back(&output); },
            .changed = [this](agent::Output& output) { ++changes[&output]; },
            .removed =
                [this](agent::Output& output) {
                    removed.push_back(output.description().connector);
                    std::erase(outputs, &output);
                },
            .refresh = [this](agent::Output& output) { ++refreshes[&output]; },
            .command =
                [this](agent::Output& output, agent::WindowCommand command) {
                    commands.emplace_back(&output, command);
                },
            .ended =
                [this](const std::string& why) {
                    ++ends;
                    reason = why;
                },
        };
    }

    /// Turns the loop until `condition` holds; false when the deadline passes first.
    template <typename Condition>
    bool turnUntil(MainLoop& loop, Condition condition,
                   std::chrono::milliseconds deadline = std::chrono::seconds(20)) {
        const auto end = std::chrono::steady_clock::now() + deadline;
        while (!condition()) {
            if (std::chrono::steady_clock::now() > end) {
                return false;
            }
            loop.turn();
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return true;
    }

    /// Those that there are, in the order of their announcement.
    std::vector<agent::Output*> outputs;
    std::map<agent::Output*, int> changes;
    std::map<agent::Output*, int> refreshes;
    std::vector<std::pair<agent::Output*, agent::WindowCommand>> commands;
    std::vector<std::string> removed;
    int ends = 0;
    std::string reason;
};

} // namespace vantor
