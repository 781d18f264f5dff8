#pragma once
// What the compositor offers. Main thread.

#include "agent/output/wayland/proxy.h"

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vantor::agent::wayland {

class Globals {
  public:
    /// Something that the compositor has, by the registry's number for it.
    struct Name {
        std::uint32_t number = 0;
        std::uint32_t version = 0;
    };

    /// Filled by the display's events.
    explicit Globals(wl_display* display);
    Globals(const Globals&) = delete;
    Globals& operator=(const Globals&) = delete;

    wl_compositor* compositor() const { return compositor_.get(); }
    zwlr_layer_shell_v1* layerShell() const { return layerShell_.get(); }
    /// These four are null where the compositor has none.
    zxdg_output_manager_v1* outputManager() const { return outputManager_.get(); }
    wp_viewporter* viewporter() const { return viewporter_.get(); }
    wp_fractional_scale_manager_v1* fractionalScales() const { return fractionalScales_.get(); }
    zwlr_output_power_manager_v1* outputPowers() const { return outputPowers_.get(); }

    /// The outputs that there are now, in the order of their coming.
    const std::vector<Name>& outputs() const { return outputs_; }

    // What speaks as soon as it is bound is bound by who listens.
    Proxy<wl_output> bindOutput(const Name& output) const;
    /// Null where the compositor has none.
    Proxy<zwlr_foreign_toplevel_manager_v1> bindToplevelManager() const;

  private:
    static const wl_registry_listener kListener;

    void announced(const Name& global, std::string_view interface);
    void withdrawn(std::uint32_t number);
    /// Binds the first global of a kind; later ones are passed over.
    template <typename T>
    void bindFirst(Proxy<T>& proxy, const wl_interface& interface, const Name& global,
                   std::uint32_t newest);
    /// `newest` is the newest version that this program speaks.
    template <typename T>
    Proxy<T> bind(const wl_interface& interface, const Name& global, std::uint32_t newest) const;

    Proxy<wl_registry> registry_;
    Proxy<wl_compositor> compositor_;
    Proxy<zwlr_layer_shell_v1> layerShell_;
    Proxy<zxdg_output_manager_v1> outputManager_;
    Proxy<wp_viewporter> viewporter_;
    Proxy<wp_fractional_scale_manager_v1> fractionalScales_;
    Proxy<zwlr_output_power_manager_v1> outputPowers_;
    std::optional<Name> toplevelManager_;
    std::vector<Name> outputs_;
};

} // namespace vantor::agent::wayland
