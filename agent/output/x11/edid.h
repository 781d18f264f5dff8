#pragma once
// Who made a display, from what it says of itself.

#include <cstdint>
#include <span>
#include <string>

namespace vantor::agent::x11 {

struct DisplayName {
    /// The three letters of the maker.
    std::string make;
    std::string model;

    bool operator==(const DisplayName&) const = default;
};

/// From a display's EDID (VESA Enhanced EDID 1.4, sections 3.4 and 3.10.3). Empty for what is no
/// EDID; the model is empty where none is named.
DisplayName parseEDID(std::span<const std::uint8_t> bytes);

} // namespace vantor::agent::x11
