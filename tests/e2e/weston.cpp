#include "tests/e2e/weston.h"

#include <csignal>
#include <cstdlib>
#include <stdexcept>

namespace vantor::e2e {

using std::chrono::seconds;

Weston::Weston(const X11Server&, const WestonOptions& options) { start("x11-backend.so", options); }

Weston::Weston(const WestonOptions& options) { start("headless-backend.so", options); }

void Weston::start(const std::string& backend, const WestonOptions& options) {
    const std::filesystem::path socket = folder_.path() / "wayland-0";
    // Ends with the test, however that ends.
    compositor_.emplace(
        std::vector<std::string>{"/usr/bin/setpriv", "--pdeathsig", "KILL", "--", "/usr/bin/weston",
                                 "--backend=" + backend, "--shell=kiosk-shell.so", "--use-pixman",
                                 "--no-config", "--socket=" + socket.filename().string(),
                                 "--width=" + std::to_string(options.width),
                                 "--height=" + std::to_string(options.height),
                                 "--scale=" + std::to_string(options.scale)},
        std::map<std::string, std::string>{{"XDG_RUNTIME_DIR", folder_.path().string()}});
    if (!eventually([&] { return std::filesystem::is_socket(socket); }, seconds(20))) {
        throw std::runtime_error("the compositor does not start: " + compositor_->output() +
                                 compositor_->errors());
    }
    ::setenv("XDG_RUNTIME_DIR", folder_.path().c_str(), 1);
    ::setenv("WAYLAND_DISPLAY", socket.filename().c_str(), 1);
    ::unsetenv("DISPLAY");
}

void Weston::kill() {
    compositor_->signal(SIGKILL);
    compositor_->wait(seconds(20));
}

} // namespace vantor::e2e
