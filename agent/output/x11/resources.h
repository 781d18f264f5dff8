#pragma once
// How dense the desktop says that its displays are.

#include <string_view>

namespace vantor::agent::x11 {

/// Pixels per point from the text of the X resources: "Xft.dpi" over 96, between 0.5 and 8; 1
/// without it.
double scaleFrom(std::string_view resources);

} // namespace vantor::agent::x11
