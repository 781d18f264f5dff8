#pragma once
// The wallpaper agent: starts the extension and keeps it running, asks it for a wallpaper for each
// output, shows what it draws, and answers what is asked of it. Main thread.

#include "agent/choices.h"
#include "agent/conditions/system_conditions.h"
#include "agent/configuration/configuration_watch.h"
#include "agent/control/control_service.h"
#include "agent/extension_supervisor.h"
#include "agent/output/output.h"
#include "agent/run_options.h"
#include "agent/run_status.h"
#include "agent/shown_output.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <filesystem>
#include <limits>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vantor {
class Platform;
}

namespace vantor::agent {

class WallpaperAgent : private Controller {
  public:
    /// The loop is the platform's main queue.
    WallpaperAgent(Platform& platform, MainLoop& loop, RunOptions options);
    ~WallpaperAgent() override;
    WallpaperAgent(const WallpaperAgent&) = delete;
    WallpaperAgent& operator=(const WallpaperAgent&) = delete;

    /// Runs for the time asked for, or until SIGINT or SIGTERM.
    RunStatus run();

  private:
    // Being started (wallpaper_agent.cpp).
    Result<Done, std::string> start();
    /// Lets others ask. The error is a sentence: another agent has the desktop already.
    Result<Done, std::string> listen();
    /// What is remembered, and the configuration.
    Result<Done, std::string> readFiles();
    OutputEvents outputEvents();
    SupervisorEvents supervisorEvents();
    void scheduleEnd();
    /// Takes the first and, a second later, the second picture of every display.
    void schedulePictures();
    void writePictures(const char* which);
    /// Releases the wallpapers, then stops the loop.
    void end(RunStatus status);
    void printSummary() const;
    bool isTroubled() const;

    // Outputs and the extension (wallpaper_agent_events.cpp).
    void outputAdded(Output& output);
    /// Puts a wallpaper on the output. Without a display for it the reason is told.
    void show(Output& output);
    void hide(Output& output);
    /// The display is about to show a frame.
    void tick(std::uint32_t number);
    /// The GPU's device is lost: everything that was made with it is made anew.
    void replaceGPU();
    void outputChanged(Output& output);
    void outputRemoved(Output& output);
    void outputRefreshes(Output& output);
    void commanded(Output& output, WindowCommand command);
    void showNext(Output& output);
    void sessionStarted(ExtensionSession& session);
    void extensionDied(const std::string& how, double delay, bool setAside);
    /// What the outputs show is not shown until it changes.
    void setAsideWhatIsShown(const std::string& how);
    void attach(ShownOutput& shown, std::uint32_t contextID);
    void attached(std::uint32_t contextID, FileDescriptor socket);
    void linksRun(std::uint32_t displayID, std::uint32_t frameRate);
    void openHostApplication();
    ShownOutput* find(const Output& output) const;
    ShownOutput* find(std::uint32_t number) const;
    std::uint32_t numberOf(const Output& output);
    void announceScreens();

    // What outputs should be (wallpaper_agent.cpp).
    /// Lets every output be what it should be now, and tells the extension what differs.
    void apply();
    void apply(ShownOutput& shown);
    SharedState sharedState() const;
    void saveMemory();
    /// What is said of the agent may be something else.
    void noteChange() const;

    // Being asked (wallpaper_agent_control.cpp).
    AgentStatus status() const override;
    void picker(std::function<void(Result<Picker, std::string>)> done) override;
    Result<Done, std::string> choose(std::string_view output, std::string_view entry) override;
    void setLocked(bool locked) override;
    void setPaused(bool paused) override;
    Result<Done, std::string> reload() override;
    void quit() override;
    /// Asks the extension whether it offers the entry, and tells of the trouble when it does not.
    void doubt(const ShownOutput& chosen, std::string entry);
    void conditionsChanged();
    /// The host application may have chosen something else.
    void choicesChanged();
    void configurationChanged();
    /// An output by its connector or its display's number.
    ShownOutput* named(std::string_view output) const;

    Platform& platform_;
    MainLoop& loop_;
    RunOptions options_;
    std::shared_ptr<vulkan::Context> gpu_;

    AgentMemory memory_;
    /// Nothing when the user has no place for it.
    std::optional<std::filesystem::path> memoryFile_;
    Choices choices_;
    std::optional<std::filesystem::path> configurationFile_;
    Configuration configuration_;
    std::string configurationError_;
    std::unique_ptr<ConfigurationWatch> configurationWatch_;
    std::unique_ptr<SystemConditions> conditions_;
    /// Null when nobody can ask.
    std::unique_ptr<ControlService> control_;

    /// By connector; a wallpaper that is asked for again soon is the one of before.
    std::map<std::string, UUID> identifiers_;
    /// Numbers of displays that come and go with this run.
    AgentMemory runNumbers_;
    std::unique_ptr<OutputBackend> backend_;
    std::vector<Output*> outputs_;
    /// After what they show on.
    std::vector<std::unique_ptr<ShownOutput>> shown_;
    std::unique_ptr<ExtensionSupervisor> supervisor_;
    /// Displays by the context they asked to attach to.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> attaching_;
    std::optional<Picker> picker_;

    /// Until the next attempt to replace a lost GPU.
    std::unique_ptr<Alarm> gpuAlarm_;
    bool isLocked_ = false;
    /// What the system said of the lock last.
    bool wasLocked_ = false;
    bool isPaused_ = false;
    /// While the screen is not locked; nothing follows the configuration.
    std::optional<std::string> unlockedMode_;
    bool ending_ = false;
    /// Media time of the last opening.
    double hostApplicationOpened_ = -std::numeric_limits<double>::infinity();
    /// A picture could not be written.
    bool pictureLost_ = false;
    /// Held weakly by observers, which live as long as the process.
    std::shared_ptr<WallpaperAgent*> self_ = std::make_shared<WallpaperAgent*>(this);
};

} // namespace vantor::agent
