#pragma once
// What can be asked of a running agent, by its own commands and by other programs. Main thread.

#include "agent/kit/picker.h"
#include "platform/result.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantor::agent {

/// One output and what it shows.
struct OutputStatus {
    /// The display's number, by which the host application and `--choose` know it.
    std::uint32_t display = 0;
    std::string connector;
    std::string make;
    std::string model;
    /// Pixels.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    double scale = 1.0;
    double refreshRate = 0;
    /// The entry that was chosen for it.
    std::string choice;
    /// Why another one is shown instead; nothing when the chosen one is shown.
    std::optional<std::string> setAside;
    /// As the wallpaper was told: "locked", "idle" or "default", "active" or "suspended".
    std::string presentationMode;
    std::string activityState;
    /// Why nothing runs: of "asked", "covered", "off", "battery", "asleep", "session", in this
    /// order. Empty while something may.
    std::vector<std::string> pauses;
    /// Of the extension, shown in the last second and since the start.
    double framesPerSecond = 0;
    std::uint64_t frames = 0;
    /// Why it does not show what it should; empty when it does.
    std::string trouble;

    bool operator==(const OutputStatus&) const = default;
};

struct ExtensionStatus {
    /// Nothing while none runs.
    std::optional<std::int32_t> pid;
    /// Since the agent started.
    std::uint32_t restarts = 0;
    /// How it ended last ("was ended by signal 9"); empty when it has not.
    std::string lastEnd;
    /// Resident bytes.
    std::uint64_t memory = 0;

    bool operator==(const ExtensionStatus&) const = default;
};

struct AgentStatus {
    std::string version;
    std::int32_t pid = 0;
    /// "headless", "window" or "background".
    std::string outputKind;
    bool isLocked = false;
    bool isPaused = false;
    bool isOnBattery = false;
    /// Resident bytes of the agent itself.
    std::uint64_t memory = 0;
    ExtensionStatus extension;
    std::vector<OutputStatus> outputs;
    /// The last error of the configuration file, with its place; empty when it is in use.
    std::string configurationError;

    bool operator==(const AgentStatus&) const = default;
};

class Controller {
  public:
    virtual ~Controller() = default;
    virtual AgentStatus status() const = 0;
    /// What the extension offers, kept up to date as it pushes changes; `done` may be called at
    /// once or later, and gets a sentence when there is none.
    virtual void picker(std::function<void(Result<Picker, std::string>)> done) = 0;
    /// `output` is a connector or a display number, `entry` what to show there: an entry, or
    /// "default" for what the configuration says. Remembered. The error is a sentence.
    virtual Result<Done, std::string> choose(std::string_view output, std::string_view entry) = 0;
    /// Whether wallpapers are shown as on a locked screen. Locks no session.
    virtual void setLocked(bool locked) = 0;
    /// Nothing runs while it is paused.
    virtual void setPaused(bool paused) = 0;
    /// Reads the configuration anew. The error is its text with file, line and column; the one in
    /// use stays.
    virtual Result<Done, std::string> reload() = 0;
    /// Ends the agent in order, after the answer.
    virtual void quit() = 0;
};

} // namespace vantor::agent
