#pragma once
// A 128-bit identifier (RFC 4122). Its text form has 8-4-4-4-12 hexadecimal digits.

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vantor {

struct UUID {
    std::array<std::uint8_t, 16> bytes{};

    /// Reads the text form, either letter case. Anything else, surrounding blanks and braces
    /// included, gives nothing.
    static std::optional<UUID> parse(std::string_view text);

    /// A new random (version 4) identifier.
    static UUID random();

    /// The canonical text, in upper case as the system prints identifiers.
    std::string text() const;

    bool operator==(const UUID&) const = default;
    bool operator<(const UUID& other) const { return bytes < other.bytes; }
};

} // namespace vantor

template <>
struct std::hash<vantor::UUID> {
    std::size_t operator()(const vantor::UUID& id) const noexcept;
};
