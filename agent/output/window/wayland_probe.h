#pragma once
// Whether SDL may be let at a Wayland compositor.

#include <string>

namespace vantor::agent {

/// Why the compositor that the environment names can have no windows of SDL's: a sentence, empty
/// when it can. SDL 2.26 crashes on one that offers no seat, as those in memory do.
std::string whyNotWayland();

} // namespace vantor::agent
