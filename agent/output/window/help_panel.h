#pragma once
// The help that lies over a window's wallpaper: which display it is, and what the keys do.

#include "agent/host/hosted_context.h"
#include "agent/output/output.h"

namespace vantor::agent {

/// Opaque, in the display's pixels and scale; smaller where the display is too small for it. Empty
/// (0 × 0) when nothing legible fits.
Picture drawHelpPanel(const OutputDescription& display);

} // namespace vantor::agent
