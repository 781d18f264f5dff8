#include "agent/output/wayland/toplevels.h"

#include <algorithm>
#include <cstdint>
#include <span>

namespace vantor::agent::wayland {

/// One window of another program.
class Toplevel {
  public:
    explicit Toplevel(zwlr_foreign_toplevel_handle_v1* handle) : handle_(handle) {
        zwlr_foreign_toplevel_handle_v1_add_listener(handle, &kListener, this);
    }
    Toplevel(const Toplevel&) = delete;
    Toplevel& operator=(const Toplevel&) = delete;

    bool isClosed() const { return isClosed_; }
    bool isActivated() const { return state_.isActivated; }
    bool isOn(wl_output* output) const { return std::ranges::count(state_.outputs, output) != 0; }
    bool sharesAnOutputWith(const Toplevel& other) const {
        return std::ranges::any_of(state_.outputs,
                                   [&](wl_output* output) { return other.isOn(output); });
    }
    bool covers() const { return state_.isFullscreen && !state_.isMinimized && !isPutAway_; }

    /// `focus` is the window that has it, or null.
    void follow(const Toplevel* focus) {
        if (isActivated()) {
            isPutAway_ = false;
        } else if (focus == nullptr ? hadFocus_ : sharesAnOutputWith(*focus)) {
            isPutAway_ = true;
        }
        hadFocus_ = isActivated();
    }
    void forget(wl_output* output) {
        std::erase(state_.outputs, output);
        std::erase(incoming_.outputs, output);
    }

  private:
    struct State {
        std::vector<wl_output*> outputs;
        bool isActivated = false;
        bool isFullscreen = false;
        bool isMinimized = false;
    };

    static const zwlr_foreign_toplevel_handle_v1_listener kListener;

    static Toplevel& of(void* data) { return *static_cast<Toplevel*>(data); }
    void entered(wl_output* output);
    void stated(const wl_array& states);

    Proxy<zwlr_foreign_toplevel_handle_v1> handle_;
    /// What `done` makes the state.
    State incoming_;
    State state_;
    bool isClosed_ = false;
    bool hadFocus_ = false;
    bool isPutAway_ = false;
};

const zwlr_foreign_toplevel_handle_v1_listener Toplevel::kListener = {
    .title = [](void*, zwlr_foreign_toplevel_handle_v1*, const char*) {},
    .app_id = [](void*, zwlr_foreign_toplevel_handle_v1*, const char*) {},
    .output_enter = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                       wl_output* output) { of(data).entered(output); },
    .output_leave = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                       wl_output* output) { std::erase(of(data).incoming_.outputs, output); },
    .state = [](void* data, zwlr_foreign_toplevel_handle_v1*,
                wl_array* states) { of(data).stated(*states); },
    .done = [](void* data,
               zwlr_foreign_toplevel_handle_v1*) { of(data).state_ = of(data).incoming_; },
    .closed = [](void* data, zwlr_foreign_toplevel_handle_v1*) { of(data).isClosed_ = true; },
    .parent = [](void*, zwlr_foreign_toplevel_handle_v1*, zwlr_foreign_toplevel_handle_v1*) {},
};

void Toplevel::entered(wl_output* output) {
    // Null for an output that went while the event was under way.
    if (output != nullptr && std::ranges::count(incoming_.outputs, output) == 0) {
        incoming_.outputs.push_back(output);
    }
}

void Toplevel::stated(const wl_array& states) {
    const std::span values(static_cast<const std::uint32_t*>(states.data),
                           states.size / sizeof(std::uint32_t));
    const auto has = [&](std::uint32_t state) { return std::ranges::count(values, state) != 0; };
    incoming_.isActivated = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_ACTIVATED);
    incoming_.isFullscreen = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_FULLSCREEN);
    incoming_.isMinimized = has(ZWLR_FOREIGN_TOPLEVEL_HANDLE_V1_STATE_MINIMIZED);
}

const zwlr_foreign_toplevel_manager_v1_listener Toplevels::kListener = {
    .toplevel =
        [](void* data, zwlr_foreign_toplevel_manager_v1*, zwlr_foreign_toplevel_handle_v1* handle) {
            static_cast<Toplevels*>(data)->toplevels_.push_back(std::make_unique<Toplevel>(handle));
        },
    .finished =
        [](void* data, zwlr_foreign_toplevel_manager_v1*) {
            static_cast<Toplevels*>(data)->manager_.reset();
        },
};

Toplevels::Toplevels(const Globals& globals) : manager_(globals.bindToplevelManager()) {
    if (manager_) {
        zwlr_foreign_toplevel_manager_v1_add_listener(manager_.get(), &kListener, this);
    }
}

Toplevels::~Toplevels() = default;

void Toplevels::settle() {
    std::erase_if(toplevels_, [](const auto& toplevel) { return toplevel->isClosed(); });
    const auto focus = std::ranges::find_if(
        toplevels_, [](const auto& toplevel) { return toplevel->isActivated(); });
    for (const auto& toplevel : toplevels_) {
        toplevel->follow(focus == toplevels_.end() ? nullptr : focus->get());
    }
}

bool Toplevels::cover(wl_output* output) const {
    return std::ranges::any_of(toplevels_, [&](const auto& toplevel) {
        return toplevel->covers() && toplevel->isOn(output);
    });
}

void Toplevels::forget(wl_output* output) {
    for (const auto& toplevel : toplevels_) {
        toplevel->forget(output);
    }
}

} // namespace vantor::agent::wayland
