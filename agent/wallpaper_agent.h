#pragma once
// The wallpaper agent over virtual displays: starts the extension, asks it for a wallpaper for each
// display, shows what it draws, and says what happened. Main thread.

#include "agent/display.h"
#include "agent/extension_session.h"
#include "agent/run_options.h"
#include "agent/run_status.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <filesystem>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace vantor {
class Platform;
}

namespace vantor::agent {

class WallpaperAgent {
  public:
    /// The loop is the platform's main queue.
    WallpaperAgent(Platform& platform, MainLoop& loop, RunOptions options);
    ~WallpaperAgent();
    WallpaperAgent(const WallpaperAgent&) = delete;
    WallpaperAgent& operator=(const WallpaperAgent&) = delete;

    /// Runs for the time asked for, or until SIGINT or SIGTERM.
    RunStatus run();

  private:
    Result<Done, std::string> start();
    Result<Done, std::string> makeDisplays();
    void acquire(Display& display);
    void attached(std::uint32_t contextID, FileDescriptor socket);
    void openHostApplication();
    void refresh();
    /// Takes the first and, a second later, the second picture of every display.
    void schedulePictures();
    void writePictures(const char* which);
    void scheduleEnd();
    /// Tells every wallpaper that the screen is unlocked.
    void unlock();
    /// Releases the wallpapers, then stops the loop.
    void end(RunStatus status);
    void printSummary() const;

    Platform& platform_;
    MainLoop& loop_;
    RunOptions options_;
    std::vector<std::unique_ptr<Display>> displays_;
    std::unique_ptr<ExtensionSession> session_;
    std::unique_ptr<RepeatingTimer> refreshTimer_;
    /// Displays by the context they asked to attach to.
    std::vector<std::pair<std::uint32_t, Display*>> attaching_;
    bool ending_ = false;
    /// Media time of the last opening.
    double hostApplicationOpened_ = -std::numeric_limits<double>::infinity();
    /// A picture could not be written.
    bool pictureLost_ = false;
};

} // namespace vantor::agent
