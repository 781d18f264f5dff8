#pragma once
// The agent's requests, read as generic trees of labelled children. Nothing here fails: what is
// missing or of another kind falls back to its default. Free of state; any thread.

#include "platform/geometry.h"
#include "platform/object_runtime.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vantor::PrivateBridge {

/// The children of values at depths 0 to this one are examined.
inline constexpr int kMaxSearchDepth = 7;
/// Values that one search looks at before it gives up. Requests hold some dozens; the depth alone
/// does not bound a cyclic graph with many children a value.
inline constexpr std::size_t kMaxVisitedValues = 8192;

/// What an "acquire" asks for.
struct Creation {
    /// Which wallpaper, as UTF-8 text.
    std::optional<std::string> configuration = std::nullopt;
    /// Points. The width is above 0; the height may be anything.
    Size size{.width = 1920, .height = 1080};
    double scale = 2.0;
    std::optional<std::uint32_t> displayID = std::nullopt;
    bool isPreview = false;
    std::string presentationMode = "default";
    std::string activityState = "active";
    /// The absolute text of a file URL.
    std::optional<std::string> cacheDirectory = std::nullopt;

    bool operator==(const Creation&) const = default;
};

/// What an "update" changes. Size and scale are passed on unchecked.
struct Update {
    std::string presentationMode = "default";
    std::string activityState = "active";
    std::optional<Size> size = std::nullopt;
    std::optional<double> scale = std::nullopt;

    bool operator==(const Update&) const = default;
};

/// The value of the first child labelled `key`, depth first and each child before its own children.
/// Callers start with depth 0. Null when there is none, and for a null value.
ReflectedRef find(std::string_view key, const ReflectedRef& value, int depth);

/// The first UUID in `value`, itself included, depth first. Callers start with depth 0.
std::optional<UUID> firstUUID(const ReflectedRef& value, int depth);

/// The name of an enumeration's case, or the description of any other value; nothing for null.
std::optional<std::string> caseName(const ReflectedRef& value);

/// `request` is null when the agent sent none.
Creation parseCreation(const ReflectedRef& request);
Update parseUpdate(const ReflectedRef& request);

} // namespace vantor::PrivateBridge
