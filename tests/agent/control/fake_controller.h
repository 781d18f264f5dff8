#pragma once
// A running agent's core that remembers what it was asked for.

#include "agent/control/controller.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vantor::agent {

class FakeController : public Controller {
  public:
    AgentStatus status() const override {
        ++statusCalls;
        return now;
    }
    void picker(std::function<void(Result<Picker, std::string>)> done) override {
        asked.emplace_back("picker");
        if (pickerIsReady) {
            done(offered);
        } else {
            waiting.push_back(std::move(done));
        }
        if (pickerAsked) {
            pickerAsked();
        }
    }
    Result<Done, std::string> choose(std::string_view output, std::string_view entry) override {
        asked.push_back("choose " + std::string(output) + " " + std::string(entry));
        return answer;
    }
    void setLocked(bool locked) override {
        asked.emplace_back(locked ? "lock" : "unlock");
        now.isLocked = locked;
    }
    void setPaused(bool paused) override {
        asked.emplace_back(paused ? "pause" : "resume");
        now.isPaused = paused;
    }
    Result<Done, std::string> reload() override {
        asked.emplace_back("reload");
        return answer;
    }
    void quit() override { asked.emplace_back("quit"); }

    AgentStatus now;
    mutable int statusCalls = 0;
    Result<Picker, std::string> offered = Picker{};
    /// The picker is answered at once; else by whoever calls those that wait.
    bool pickerIsReady = true;
    std::vector<std::function<void(Result<Picker, std::string>)>> waiting;
    std::function<void()> pickerAsked;
    /// To what can be refused.
    Result<Done, std::string> answer = Done{};
    /// In words, the oldest first.
    std::vector<std::string> asked;
};

/// A status in which every field says something.
inline AgentStatus fullStatus() {
    return {.version = "1.2",
            .pid = 4711,
            .outputKind = "background",
            .isLocked = true,
            .isPaused = false,
            .isOnBattery = true,
            .memory = 52428800,
            .extension = {.pid = 4712,
                          .restarts = 3,
                          .lastEnd = "was ended by signal 9",
                          .memory = 104857600},
            .outputs = {{.display = 1,
                         .connector = "DP-1",
                         .make = "Acme",
                         .model = "Wide",
                         .width = 3840,
                         .height = 2160,
                         .scale = 1.5,
                         .refreshRate = 59.94,
                         .choice = "builtin.smoke",
                         .setAside = "\"builtin.smoke\" ended the extension 5 times.",
                         .presentationMode = "locked",
                         .activityState = "active",
                         .pauses = {"asked", "battery"},
                         .framesPerSecond = 29.5,
                         .frames = 12345,
                         .trouble = "no picture since 3 s"},
                        {.display = 2,
                         .connector = "HDMI-A-1",
                         .make = "",
                         .model = "",
                         .width = 1920,
                         .height = 1080,
                         .scale = 1,
                         .refreshRate = 60,
                         .choice = "match-desktop",
                         .setAside = std::nullopt,
                         .presentationMode = "default",
                         .activityState = "suspended",
                         .pauses = {},
                         .framesPerSecond = 0,
                         .frames = 0,
                         .trouble = ""}},
            .configurationError = "agent.toml:1:11: max_fps is 0, but must be above 0"};
}

/// A picker in which every field says something.
inline Picker fullPicker() {
    const PickerGroup group{.id = "engine",
                            .name = "Engine",
                            .sortOrder = -1,
                            .items = {{.id = "plasma",
                                       .name = "Plasma \"€\"",
                                       .description = "It glows.",
                                       .thumbnail = "file:///pictures/a%20b.png",
                                       .configuration = "{}",
                                       .provider = "com.example",
                                       .badge = "dynamic",
                                       .showInTopLevel = true,
                                       .sortOrder = 4,
                                       .menu = {"Open", "Forget"}}}};
    return {.desktop = {group}, .screenSaver = {group, group}};
}

} // namespace vantor::agent
