#include "tests/e2e/x11_server.h"

#include <csignal>
#include <cstdlib>
#include <gtest/gtest.h>
#include <stdexcept>
#include <string_view>
#include <xcb/xcb.h>

namespace vantor::e2e {
namespace {

using std::chrono::seconds;

template <typename T>
struct FreeDeleter {
    void operator()(T* memory) const { std::free(memory); }
};
template <typename T>
std::unique_ptr<T, FreeDeleter<T>> owned(T* reply) {
    return std::unique_ptr<T, FreeDeleter<T>>(reply);
}

/// Ends with the test, however that ends.
std::vector<std::string> tied(std::vector<std::string> command) {
    command.insert(command.begin(), {"/usr/bin/setpriv", "--pdeathsig", "KILL", "--"});
    return command;
}

} // namespace

X11Server::X11Server(WindowManager manager, unsigned width, unsigned height) {
    const std::string screen = std::to_string(width) + "x" + std::to_string(height) + "x24";
    server_.emplace(tied({"/usr/bin/Xvfb", "-displayfd", "1", "-screen", "0", screen, "-nolisten",
                          "tcp", "-noreset"}),
                    std::map<std::string, std::string>{});
    if (!eventually([&] { return server_->output().ends_with('\n'); }, seconds(20))) {
        throw std::runtime_error("the X server does not start: " + server_->errors());
    }
    display_ = ":" + server_->output();
    display_.pop_back();
    ::setenv("DISPLAY", display_.c_str(), 1);
    ::unsetenv("WAYLAND_DISPLAY");
    connection_ = xcb_connect(display_.c_str(), nullptr);
    if (xcb_connection_has_error(connection_) != 0) {
        throw std::runtime_error("the X server takes no connection");
    }
    if (manager == WindowManager::openbox) {
        startWindowManager();
    }
}

X11Server::~X11Server() { xcb_disconnect(connection_); }

std::uint32_t X11Server::root() const {
    return xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

std::uint32_t X11Server::atom(const std::string& name) const {
    const auto reply = owned(xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.data()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

void X11Server::startWindowManager() {
    manager_.emplace(tied({"/usr/bin/openbox", "--sm-disable"}),
                     std::map<std::string, std::string>{{"DISPLAY", display_}});
    // It says early that it is there, and misses what is mapped before it listens.
    const std::uint32_t active = atom("_NET_ACTIVE_WINDOW");
    const auto isListening = [&] {
        const std::uint32_t probe = addManaged("");
        const auto isActive = [&] {
            const auto reply = owned(xcb_get_property_reply(
                connection_,
                xcb_get_property(connection_, 0, root(), active, XCB_ATOM_WINDOW, 0, 1), nullptr));
            return reply && reply->value_len == 1 &&
                   *static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get())) == probe;
        };
        const bool is = eventually(isActive, std::chrono::milliseconds(300));
        removeWindow(probe);
        return is;
    };
    if (!eventually(isListening, seconds(20))) {
        throw std::runtime_error("the window manager does not start: " + manager_->errors());
    }
}

std::string X11Server::run(std::vector<std::string> command) const {
    command.front() = "/usr/bin/" + command.front();
    const Outcome outcome = e2e::run(tied(command), {{"DISPLAY", display_}}, seconds(20));
    EXPECT_EQ(outcome.status, 0) << command.front() << ": " << outcome.errors;
    return outcome.output;
}

void X11Server::kill() {
    server_->signal(SIGKILL);
    server_->wait(seconds(20));
}

std::uint32_t X11Server::windowTitled(const std::string& title) const {
    const Outcome found =
        e2e::run({"/usr/bin/xdotool", "search", "--onlyvisible", "--name", "^" + title + "$"},
                 {{"DISPLAY", display_}}, seconds(20));
    return found.status == 0 ? static_cast<std::uint32_t>(std::stoul(found.output)) : 0;
}

void X11Server::requestClose(std::uint32_t window) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window;
    event.type = atom("WM_PROTOCOLS");
    event.data.data32[0] = atom("WM_DELETE_WINDOW");
    xcb_send_event(connection_, 0, window, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

std::uint32_t X11Server::addCover(int x, int y, unsigned width, unsigned height,
                                  std::uint32_t color) const {
    const std::uint32_t window = xcb_generate_id(connection_);
    const std::uint32_t values[] = {color, 1};
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root(),
                      static_cast<std::int16_t>(x), static_cast<std::int16_t>(y),
                      static_cast<std::uint16_t>(width), static_cast<std::uint16_t>(height), 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(connection_, window);
    xcb_flush(connection_);
    return window;
}

void X11Server::removeWindow(std::uint32_t window) const {
    xcb_destroy_window(connection_, window);
    xcb_flush(connection_);
}

std::uint32_t X11Server::addManaged(const std::string& state) const {
    const std::uint32_t window = xcb_generate_id(connection_);
    const std::uint32_t white = 0xFFFFFF;
    xcb_create_window(connection_, XCB_COPY_FROM_PARENT, window, root(), 100, 100, 300, 200, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL,
                      &white);
    // Its place is a person's wish, which window managers respect.
    const std::uint32_t hints[18] = {1, 100, 100};
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NORMAL_HINTS,
                        XCB_ATOM_WM_SIZE_HINTS, 32, std::size(hints), hints);
    if (!state.empty()) {
        const std::uint32_t value = atom(state);
        xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, window, atom("_NET_WM_STATE"),
                            XCB_ATOM_ATOM, 32, 1, &value);
    }
    xcb_map_window(connection_, window);
    xcb_flush(connection_);
    return window;
}

void X11Server::setTextProperty(const std::string& name, const std::string& value) const {
    xcb_change_property(connection_, XCB_PROP_MODE_REPLACE, root(), atom(name), XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(value.size()), value.data());
    xcb_flush(connection_);
}

Pixel X11Server::at(int x, int y) const {
    const auto image = owned(xcb_get_image_reply(
        connection_,
        xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, root(), static_cast<std::int16_t>(x),
                      static_cast<std::int16_t>(y), 1, 1, ~0U),
        nullptr));
    if (!image || xcb_get_image_data_length(image.get()) < 4) {
        throw std::runtime_error("the X server gives no picture of its screen");
    }
    // 24 bits deep, in the machine's own order: blue first.
    const std::uint8_t* const bytes = xcb_get_image_data(image.get());
    return {.red = bytes[2], .green = bytes[1], .blue = bytes[0]};
}

std::vector<std::uint32_t> X11Server::stacking() const {
    const auto tree =
        owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root()), nullptr));
    if (!tree) {
        return {};
    }
    const xcb_window_t* const first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

} // namespace vantor::e2e
