#pragma once
// The desktop background of every output of a Wayland compositor that has a layer shell.

#include "agent/output/output.h"
#include "platform/linux/main_loop.h"
#include "platform/result.h"

#include <memory>
#include <string>

namespace vantor::agent {

/// Connects to the compositor that the environment names (WAYLAND_DISPLAY, XDG_RUNTIME_DIR) and
/// waits until it says what it offers. The failure is a sentence. The loop must outlive the
/// backend.
Result<std::unique_ptr<OutputBackend>, std::string> makeWaylandBackground(MainLoop& loop,
                                                                          OutputEvents events);

} // namespace vantor::agent
