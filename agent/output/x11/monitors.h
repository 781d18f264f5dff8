#pragma once
// The monitors of an X screen, as RandR 1.5 tells them.

#include "agent/output/output.h"
#include "agent/output/x11/connection.h"

#include <cstdint>
#include <vector>

namespace vantor::agent::x11 {

/// Pixels of the root window.
struct Rectangle {
    std::int32_t x = 0;
    std::int32_t y = 0;
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    bool contains(const Rectangle& other) const;
    bool operator==(const Rectangle&) const = default;
};

struct Monitor {
    Rectangle place;
    OutputDescription description;
};

/// Whether the server has RandR 1.5; it then tells of changes, by events of the extension and by
/// the root window's ConfigureNotify.
bool watchMonitors(const Connection& connection);

/// Those that are on and have a size, with that scale.
std::vector<Monitor> readMonitors(const Connection& connection, double scale);

} // namespace vantor::agent::x11
