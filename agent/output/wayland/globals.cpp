#include "agent/output/wayland/globals.h"

#include <algorithm>

namespace vantor::agent::wayland {

const wl_registry_listener Globals::kListener = {
    .global =
        [](void* self, wl_registry*, std::uint32_t number, const char* interface,
           std::uint32_t version) {
            static_cast<Globals*>(self)->announced({number, version}, interface);
        },
    .global_remove = [](void* self, wl_registry*,
                        std::uint32_t number) { static_cast<Globals*>(self)->withdrawn(number); },
};

Globals::Globals(wl_display* display) : registry_(wl_display_get_registry(display)) {
    wl_registry_add_listener(registry_.get(), &kListener, this);
}

template <typename T>
Proxy<T> Globals::bind(const wl_interface& interface, const Name& global,
                       std::uint32_t newest) const {
    return Proxy<T>(static_cast<T*>(wl_registry_bind(registry_.get(), global.number, &interface,
                                                     std::min(global.version, newest))));
}

template <typename T>
void Globals::bindFirst(Proxy<T>& proxy, const wl_interface& interface, const Name& global,
                        std::uint32_t newest) {
    if (!proxy) {
        proxy = bind<T>(interface, global, newest);
    }
}

Proxy<wl_output> Globals::bindOutput(const Name& output) const {
    return bind<wl_output>(wl_output_interface, output, 4);
}

Proxy<zwlr_foreign_toplevel_manager_v1> Globals::bindToplevelManager() const {
    return toplevelManager_ ? bind<zwlr_foreign_toplevel_manager_v1>(
                                  zwlr_foreign_toplevel_manager_v1_interface, *toplevelManager_, 3)
                            : nullptr;
}

void Globals::announced(const Name& global, std::string_view interface) {
    if (interface == wl_output_interface.name) {
        outputs_.push_back(global);
    } else if (interface == zwlr_foreign_toplevel_manager_v1_interface.name) {
        toplevelManager_ = toplevelManager_.value_or(global);
    } else if (interface == wl_compositor_interface.name) {
        bindFirst(compositor_, wl_compositor_interface, global, 4);
    } else if (interface == zwlr_layer_shell_v1_interface.name) {
        bindFirst(layerShell_, zwlr_layer_shell_v1_interface, global, 4);
    } else if (interface == zxdg_output_manager_v1_interface.name) {
        bindFirst(outputManager_, zxdg_output_manager_v1_interface, global, 3);
    } else if (interface == wp_viewporter_interface.name) {
        bindFirst(viewporter_, wp_viewporter_interface, global, 1);
    } else if (interface == wp_fractional_scale_manager_v1_interface.name) {
        bindFirst(fractionalScales_, wp_fractional_scale_manager_v1_interface, global, 1);
    } else if (interface == zwlr_output_power_manager_v1_interface.name) {
        bindFirst(outputPowers_, zwlr_output_power_manager_v1_interface, global, 1);
    }
}

void Globals::withdrawn(std::uint32_t number) {
    std::erase_if(outputs_, [number](const Name& output) { return output.number == number; });
}

} // namespace vantor::agent::wayland
