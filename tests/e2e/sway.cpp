#include "tests/e2e/sway.h"

#include <csignal>
#include <fstream>
#include <optional>
#include <pwd.h>
#include <stdexcept>
#include <unistd.h>

namespace vantor::e2e {
namespace {

constexpr auto kSwayPatience = std::chrono::seconds(60);

/// The file in a folder whose name begins like this, sockets' locks aside.
std::optional<std::filesystem::path> fileBeginning(const std::filesystem::path& folder,
                                                   const std::string& beginning) {
    for (const auto& entry : std::filesystem::directory_iterator(folder)) {
        const std::string name = entry.path().filename().string();
        if (name.starts_with(beginning) && !name.ends_with(".lock")) {
            return entry.path();
        }
    }
    return std::nullopt;
}

/// The words before the program's own that run it for a user who is not root, and end it with the
/// test. `folder` becomes that user's.
std::vector<std::string> asUser(const std::filesystem::path& folder) {
    std::vector<std::string> words = {"/usr/bin/env", "setpriv", "--pdeathsig=KILL"};
    if (::geteuid() == 0) {
        const passwd* const nobody = ::getpwnam("nobody");
        if (nobody == nullptr || ::chown(folder.c_str(), nobody->pw_uid, nobody->pw_gid) != 0) {
            throw std::runtime_error("the folder of sway cannot be given to the user nobody");
        }
        words.insert(words.end(), {"--reuid=" + std::to_string(nobody->pw_uid),
                                   "--regid=" + std::to_string(nobody->pw_gid), "--clear-groups"});
    }
    return words;
}

} // namespace

Sway::Sway(unsigned outputs, const std::string& configuration)
    : Sway("output * mode 1280x720@60Hz\n" + configuration,
           {{"WLR_BACKENDS", "headless"},
            {"WLR_LIBINPUT_NO_DEVICES", "1"},
            {"WLR_HEADLESS_OUTPUTS", std::to_string(outputs)}}) {}

std::unique_ptr<Sway> Sway::inside(const Sway& outer, unsigned outputs) {
    return std::unique_ptr<Sway>(new Sway({}, {{"WLR_BACKENDS", "wayland"},
                                               {"WAYLAND_DISPLAY", outer.socket_.string()},
                                               {"WLR_WL_OUTPUTS", std::to_string(outputs)}}));
}

Sway::Sway(const std::string& configuration, std::map<std::string, std::string> backend) {
    const std::filesystem::path file = folder_.path() / "config";
    std::ofstream(file) << "xwayland disable\n"
                           "default_border none\n"
                        << configuration << "\n";
    std::vector<std::string> words = asUser(folder_.path());
    words.insert(words.end(), {"sway", "--config", file.string()});
    backend.insert({{"HOME", folder_.path().string()},
                    {"XDG_RUNTIME_DIR", folder_.path().string()},
                    {"WLR_RENDERER", "pixman"}});
    process_ = std::make_unique<Process>(words, backend);
    const bool started = eventually(
        [&] {
            const auto control = fileBeginning(folder_.path(), "sway-ipc.");
            const auto socket = fileBeginning(folder_.path(), "wayland-");
            if (!control || !socket) {
                return !isRunning(process_->pid());
            }
            control_ = *control;
            socket_ = *socket;
            return program({"swaymsg", "--type", "get_version"}).status == 0;
        },
        kSwayPatience);
    if (!started || control_.empty()) {
        throw std::runtime_error("sway does not start: " + log());
    }
}

std::map<std::string, std::string> Sway::environment() const {
    return {{"XDG_RUNTIME_DIR", folder_.path().string()},
            {"WAYLAND_DISPLAY", socket_.string()},
            {"SWAYSOCK", control_.string()},
            {"DISPLAY", ""}};
}

Outcome Sway::program(std::vector<std::string> words) const {
    words.insert(words.begin(), "/usr/bin/env");
    return run(words, environment(), kSwayPatience);
}

void Sway::command(const std::string& line) const {
    // The words are a command of sway's even where they look like options of swaymsg's.
    const Outcome outcome = program({"swaymsg", "--", line});
    if (outcome.status != 0) {
        throw std::runtime_error("sway refuses '" + line + "': " + outcome.output + outcome.errors);
    }
}

void Sway::closeWindow(const std::string& innerOutput) const {
    command("[title=\"^wlroots - " + innerOutput + "$\"] kill");
}

std::string Sway::ask(const std::string& type) const {
    const Outcome outcome = program({"swaymsg", "--raw", "--type", type});
    if (outcome.status != 0) {
        throw std::runtime_error("sway does not answer '" + type + "': " + outcome.errors);
    }
    return outcome.output;
}

Picture Sway::screenshot(const std::string& output) const {
    const TemporaryFolder folder;
    const std::filesystem::path file = folder.path() / "screenshot.png";
    // A picture of the screen without the pointer, barely compressed.
    const Outcome outcome = program({"grim", "-l", "1", "-o", output, file.string()});
    if (outcome.status != 0) {
        throw std::runtime_error("no picture of " + output + ": " + outcome.errors);
    }
    return Picture::read(file);
}

void Sway::end(std::chrono::milliseconds deadline) {
    process_->signal(SIGTERM);
    if (!process_->wait(deadline).status) {
        throw std::runtime_error("sway does not end when it is asked to");
    }
}

} // namespace vantor::e2e
