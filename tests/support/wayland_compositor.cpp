#include "tests/support/wayland_compositor.h"

#include "platform/linux/file_descriptor.h"
#include "tests/support/wayland_compositor_state.h"

#include <algorithm>
#include <cstdlib>
#include <fractional-scale-v1-server.h>
#include <future>
#include <mutex>
#include <stdexcept>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <thread>
#include <wayland-server.h>
#include <wlr-foreign-toplevel-management-unstable-v1-server.h>
#include <wlr-layer-shell-unstable-v1-server.h>
#include <wlr-output-power-management-unstable-v1-server.h>

namespace vantor::tests {

/// The compositor's thread and what it is to do there.
class WaylandCompositor::Thread {
  public:
    explicit Thread(const CompositorOffers& offers) : state_(offers) {
        woken_ = wl_event_loop_add_fd(
            wl_display_get_event_loop(state_.display()), wake_.get(), WL_EVENT_READABLE,
            [](int, std::uint32_t, void* self) {
                static_cast<Thread*>(self)->carryOut();
                return 0;
            },
            this);
        std::string name = (std::filesystem::temp_directory_path() / "vantor-XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) {
            throw std::runtime_error("no temporary folder can be made");
        }
        folder_ = name;
        const int listening = listenAt(socket());
        if (listening < 0 || wl_display_add_socket_fd(state_.display(), listening) != 0) {
            throw std::runtime_error("the compositor cannot listen");
        }
        thread_ = std::thread([this] { wl_display_run(state_.display()); });
    }
    ~Thread() {
        run([](CompositorState& state) { wl_display_terminate(state.display()); });
        thread_.join();
        wl_event_source_remove(woken_);
        std::error_code ignored;
        std::filesystem::remove_all(folder_, ignored);
    }
    Thread(const Thread&) = delete;
    Thread& operator=(const Thread&) = delete;

    std::filesystem::path socket() const { return folder_ / "wayland"; }

    /// Carries out the work there and waits for its end.
    void run(const std::function<void(CompositorState&)>& work) {
        std::packaged_task<void()> task([&] {
            work(state_);
            wl_display_flush_clients(state_.display());
        });
        const auto done = task.get_future();
        {
            const std::scoped_lock guard(lock_);
            task_ = std::move(task);
        }
        eventfd_write(wake_.get(), 1);
        done.wait();
    }

  private:
    static int listenAt(const std::filesystem::path& path);

    void carryOut() {
        eventfd_t count = 0;
        eventfd_read(wake_.get(), &count);
        const std::scoped_lock guard(lock_);
        task_();
    }

    std::filesystem::path folder_;
    FileDescriptor wake_{eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)};
    CompositorState state_;
    wl_event_source* woken_ = nullptr;
    /// Guards `task_`.
    std::mutex lock_;
    std::packaged_task<void()> task_;
    std::thread thread_;
};

int WaylandCompositor::Thread::listenAt(const std::filesystem::path& path) {
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.native().copy(address.sun_path, sizeof(address.sun_path) - 1);
    const bool isBound =
        ::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    return isBound && ::listen(descriptor, 1) == 0 ? descriptor : -1;
}

WaylandCompositor::WaylandCompositor(const CompositorOffers& offers)
    : thread_(std::make_unique<Thread>(offers)) {}

WaylandCompositor::~WaylandCompositor() = default;

std::filesystem::path WaylandCompositor::socket() const { return thread_->socket(); }

WaylandCompositor::Id WaylandCompositor::addOutput(const MonitorState& state) {
    Id id = 0;
    thread_->run([&](CompositorState& compositor) {
        id = ++compositor.lastId;
        compositor.addOutput(id, state);
    });
    return id;
}

void WaylandCompositor::removeOutput(Id output) {
    thread_->run([&](CompositorState& compositor) {
        if (ServerOutput* const found = compositor.output(output)) {
            // Destroyed with the display: clients may still ask for it meanwhile.
            wl_global_remove(found->global);
        }
    });
}

void WaylandCompositor::changeOutput(Id output, const MonitorState& state) {
    thread_->run([&](CompositorState& compositor) {
        if (ServerOutput* const found = compositor.output(output)) {
            found->state = state;
            compositor.tell(*found);
            if (found->surface != nullptr) {
                compositor.configureBySelf(*found->surface);
            }
        }
    });
}

void WaylandCompositor::sendDone(Id output) {
    thread_->run([&](CompositorState& compositor) {
        if (const ServerOutput* const found = compositor.output(output)) {
            std::ranges::for_each(found->resources, sendMark);
        }
    });
}

void WaylandCompositor::setPower(Id output, bool isOn) {
    thread_->run([&](CompositorState& compositor) {
        if (ServerOutput* const found = compositor.output(output)) {
            found->isOn = isOn;
            for (wl_resource* const power : found->powers) {
                zwlr_output_power_v1_send_mode(power, isOn ? 1 : 0);
            }
        }
    });
}

void WaylandCompositor::failPower(Id output) {
    thread_->run([&](CompositorState& compositor) {
        if (const ServerOutput* const found = compositor.output(output)) {
            std::ranges::for_each(found->powers, zwlr_output_power_v1_send_failed);
        }
    });
}

void WaylandCompositor::setConfiguresBySelf(bool configures) {
    thread_->run([&](CompositorState& compositor) { compositor.configuresBySelf = configures; });
}

void WaylandCompositor::configure(Id output, std::uint32_t width, std::uint32_t height) {
    withSurface(output, [&](CompositorState& compositor, ServerSurface& surface) {
        compositor.configure(surface, width, height);
    });
}

void WaylandCompositor::close(Id output) {
    withSurface(output, [](CompositorState&, const ServerSurface& surface) {
        if (surface.layer != nullptr) {
            zwlr_layer_surface_v1_send_closed(surface.layer);
        }
    });
}

void WaylandCompositor::setPreferredScale(Id output, std::uint32_t scale) {
    withSurface(output, [&](CompositorState&, const ServerSurface& surface) {
        if (surface.fractionalScale != nullptr) {
            wp_fractional_scale_v1_send_preferred_scale(surface.fractionalScale, scale);
        }
    });
}

void WaylandCompositor::setAnswersFrames(bool answers) {
    thread_->run([&](CompositorState& compositor) { compositor.answersFrames = answers; });
}

void WaylandCompositor::answerFrames(Id output) {
    withSurface(output, [](CompositorState& compositor, ServerSurface& surface) {
        compositor.answerFrames(surface);
    });
}

std::optional<SeenSurface> WaylandCompositor::surface(Id output) const {
    std::optional<SeenSurface> seen;
    withSurface(output, [&](CompositorState&, const ServerSurface& surface) {
        seen = surface.current;
        seen->awaitedFrames = surface.frames.size();
        seen->configured = surface.lastSerial;
    });
    return seen;
}

WaylandCompositor::Id WaylandCompositor::openWindow() {
    Id id = 0;
    thread_->run([&](CompositorState& compositor) {
        id = ++compositor.lastId;
        compositor.addWindow(id);
    });
    return id;
}

void WaylandCompositor::enterOutput(Id window, Id output) {
    passOutput(window, output, zwlr_foreign_toplevel_handle_v1_send_output_enter);
}

void WaylandCompositor::leaveOutput(Id window, Id output) {
    passOutput(window, output, zwlr_foreign_toplevel_handle_v1_send_output_leave);
}

void WaylandCompositor::passOutput(Id window, Id output, void (*send)(wl_resource*, wl_resource*)) {
    thread_->run([&](CompositorState& compositor) {
        const ServerWindow* const passing = compositor.window(window);
        const ServerOutput* const passed = compositor.output(output);
        if (passing == nullptr || passed == nullptr) {
            return;
        }
        for (wl_resource* const handle : passing->handles) {
            for (wl_resource* const resource : passed->resources) {
                if (wl_resource_get_client(handle) == wl_resource_get_client(resource)) {
                    send(handle, resource);
                }
            }
            zwlr_foreign_toplevel_handle_v1_send_done(handle);
        }
    });
}

void WaylandCompositor::setWindowStates(Id window, const std::vector<std::uint32_t>& states) {
    thread_->run([&](CompositorState& compositor) {
        if (const ServerWindow* const found = compositor.window(window)) {
            wl_array array = {.size = states.size() * sizeof(std::uint32_t),
                              .alloc = 0,
                              .data = const_cast<std::uint32_t*>(states.data())};
            for (wl_resource* const handle : found->handles) {
                zwlr_foreign_toplevel_handle_v1_send_state(handle, &array);
                zwlr_foreign_toplevel_handle_v1_send_done(handle);
            }
        }
    });
}

void WaylandCompositor::closeWindow(Id window) {
    thread_->run([&](CompositorState& compositor) {
        if (const ServerWindow* const found = compositor.window(window)) {
            std::ranges::for_each(found->handles, zwlr_foreign_toplevel_handle_v1_send_closed);
        }
    });
}

void WaylandCompositor::finishToplevels() {
    thread_->run([](CompositorState& compositor) {
        std::ranges::for_each(compositor.toplevelManagers,
                              zwlr_foreign_toplevel_manager_v1_send_finished);
    });
}

void WaylandCompositor::disconnect() {
    thread_->run(
        [](CompositorState& compositor) { wl_display_destroy_clients(compositor.display()); });
}

void WaylandCompositor::sendProtocolError(Id output) {
    withSurface(output, [](CompositorState&, const ServerSurface& surface) {
        wl_resource_post_error(surface.layer, ZWLR_LAYER_SURFACE_V1_ERROR_INVALID_SIZE,
                               "this is what the test wants");
    });
}

int WaylandCompositor::clients() const {
    int count = 0;
    thread_->run([&](CompositorState& compositor) {
        wl_client* client = nullptr;
        wl_client_for_each(client, wl_display_get_client_list(compositor.display())) { ++count; }
    });
    return count;
}

std::vector<std::string> WaylandCompositor::violations() const {
    std::vector<std::string> all;
    thread_->run([&](CompositorState& compositor) { all = compositor.violations; });
    return all;
}

void WaylandCompositor::withSurface(
    Id output, const std::function<void(CompositorState&, ServerSurface&)>& work) const {
    thread_->run([&](CompositorState& compositor) {
        const ServerOutput* const found = compositor.output(output);
        if (found != nullptr && found->surface != nullptr) {
            work(compositor, *found->surface);
        }
    });
}

} // namespace vantor::tests
