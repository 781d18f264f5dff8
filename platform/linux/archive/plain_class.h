#pragma once
// The names that plain values are archived under, mutable variants included.

#include <cstdint>
#include <string_view>

namespace vantor::archive {

enum class PlainClass : std::uint8_t {
    none,
    string,
    number,
    data,
    array,
    dictionary,
    url,
    error,
    date
};

PlainClass plainClass(std::string_view archivedName);

/// The immutable class of that kind; empty for `none`.
std::string_view plainClassName(PlainClass kind);

} // namespace vantor::archive
