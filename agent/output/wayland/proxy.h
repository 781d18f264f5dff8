#pragma once
// The one owner of each object that lives in the compositor.

#include <fractional-scale-v1-client.h>
#include <memory>
#include <viewporter-client.h>
#include <wayland-client.h>
#include <wlr-foreign-toplevel-management-unstable-v1-client.h>
#include <wlr-layer-shell-unstable-v1-client.h>
#include <wlr-output-power-management-unstable-v1-client.h>
#include <xdg-output-unstable-v1-client.h>

namespace vantor::agent::wayland {

struct ProxyDestroyer {
    void operator()(wl_callback* proxy) const { wl_callback_destroy(proxy); }
    void operator()(wl_compositor* proxy) const { wl_compositor_destroy(proxy); }
    void operator()(wl_region* proxy) const { wl_region_destroy(proxy); }
    void operator()(wl_registry* proxy) const { wl_registry_destroy(proxy); }
    void operator()(wl_surface* proxy) const { wl_surface_destroy(proxy); }
    void operator()(wl_output* proxy) const {
        if (wl_output_get_version(proxy) >= WL_OUTPUT_RELEASE_SINCE_VERSION) {
            wl_output_release(proxy);
        } else {
            wl_output_destroy(proxy);
        }
    }
    void operator()(wp_fractional_scale_manager_v1* proxy) const {
        wp_fractional_scale_manager_v1_destroy(proxy);
    }
    void operator()(wp_fractional_scale_v1* proxy) const { wp_fractional_scale_v1_destroy(proxy); }
    void operator()(wp_viewport* proxy) const { wp_viewport_destroy(proxy); }
    void operator()(wp_viewporter* proxy) const { wp_viewporter_destroy(proxy); }
    void operator()(zwlr_foreign_toplevel_handle_v1* proxy) const {
        zwlr_foreign_toplevel_handle_v1_destroy(proxy);
    }
    void operator()(zwlr_foreign_toplevel_manager_v1* proxy) const {
        zwlr_foreign_toplevel_manager_v1_destroy(proxy);
    }
    void operator()(zwlr_layer_shell_v1* proxy) const {
        if (zwlr_layer_shell_v1_get_version(proxy) >= ZWLR_LAYER_SHELL_V1_DESTROY_SINCE_VERSION) {
            zwlr_layer_shell_v1_destroy(proxy);
        } else {
            wl_proxy_destroy(reinterpret_cast<wl_proxy*>(proxy));
        }
    }
    void operator()(zwlr_layer_surface_v1* proxy) const { zwlr_layer_surface_v1_destroy(proxy); }
    void operator()(zwlr_output_power_manager_v1* proxy) const {
        zwlr_output_power_manager_v1_destroy(proxy);
    }
    void operator()(zwlr_output_power_v1* proxy) const { zwlr_output_power_v1_destroy(proxy); }
    void operator()(zxdg_output_manager_v1* proxy) const { zxdg_output_manager_v1_destroy(proxy); }
    void operator()(zxdg_output_v1* proxy) const { zxdg_output_v1_destroy(proxy); }
};

template <typename T>
using Proxy = std::unique_ptr<T, ProxyDestroyer>;

} // namespace vantor::agent::wayland
