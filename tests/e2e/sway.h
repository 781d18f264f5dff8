#pragma once
// A real Wayland compositor without a screen: sway on virtual outputs, started for one test. sway
// refuses to run as root, so a test of root's gives it to the user `nobody`; what connects to it
// may be anybody's.

#include "tests/e2e/picture.h"
#include "tests/e2e/process.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vantor::e2e {

/// What cannot be done throws, which fails the test that asked for it.
class Sway {
  public:
    /// Starts sway with outputs HEADLESS-1, HEADLESS-2, … of 1280 × 720 pixels side by side, and
    /// waits until programs can connect. `configuration` is added to the fixture's own.
    explicit Sway(unsigned outputs = 2, const std::string& configuration = {});
    /// Starts one whose outputs WL-1, WL-2, … are windows of another. The headless ones can neither
    /// be pulled out nor switched off; these go when their window is closed (`closeWindow`).
    static std::unique_ptr<Sway> inside(const Sway& outer, unsigned outputs);
    /// Ends sway at once.
    ~Sway() = default;

    /// With which a program finds this sway and no other display server.
    std::map<std::string, std::string> environment() const;
    std::filesystem::path socket() const { return socket_; }
    pid_t pid() const { return process_->pid(); }
    /// What it has logged until now.
    std::string log() const { return process_->errors(); }

    /// Carries out a command as a line of the configuration would ("output HEADLESS-2 scale 1.5").
    void command(const std::string& line) const;
    /// Closes the window that is that output of a sway inside this one.
    void closeWindow(const std::string& innerOutput) const;
    /// What `swaymsg --type` gives: "get_outputs", "get_tree"; JSON.
    std::string ask(const std::string& type) const;
    /// What the output shows, pixel by pixel. It must be on.
    Picture screenshot(const std::string& output) const;
    /// Asks sway to end and waits until it has.
    void end(std::chrono::milliseconds deadline = std::chrono::seconds(30));

  private:
    Sway(const std::string& configuration, std::map<std::string, std::string> backend);
    /// Runs a program that talks to this sway.
    Outcome program(std::vector<std::string> words) const;

    TemporaryFolder folder_;
    std::filesystem::path socket_;
    std::filesystem::path control_;
    std::unique_ptr<Process> process_;
};

} // namespace vantor::e2e
