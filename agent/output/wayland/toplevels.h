#pragma once
// The windows of other programs, as far as they matter: which outputs a full-screen one covers.
// Main thread.

#include "agent/output/wayland/globals.h"
#include "agent/output/wayland/proxy.h"

#include <memory>
#include <vector>

namespace vantor::agent::wayland {

class Toplevel;

class Toplevels {
  public:
    /// Where the compositor tells nothing about windows, nothing is ever covered.
    explicit Toplevels(const Globals& globals);
    ~Toplevels();
    Toplevels(const Toplevels&) = delete;
    Toplevels& operator=(const Toplevels&) = delete;

    /// Takes in what the compositor has told since the last call.
    void settle();
    /// As of the last `settle`: whether a full-screen window lies over the output.
    ///
    /// The protocol does not tell which of a full-screen window and another one on the same output
    /// is seen, and a window stays on its output while a workspace without it is shown. The focus
    /// tells more: a full-screen window that lost it to another window of its output, or to none at
    /// all, has been put away. One that lost it to another output has not.
    bool cover(wl_output* output) const;
    /// The output is about to go.
    void forget(wl_output* output);

  private:
    static const zwlr_foreign_toplevel_manager_v1_listener kListener;

    Proxy<zwlr_foreign_toplevel_manager_v1> manager_;
    std::vector<std::unique_ptr<Toplevel>> toplevels_;
};

} // namespace vantor::agent::wayland
