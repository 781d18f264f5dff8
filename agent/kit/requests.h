#pragma once
// What the agent says to an extension and hears from it, as objects of the agent's classes. Any
// thread.

#include "platform/geometry.h"
#include "platform/object_runtime.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vantor::agent {

/// What one wallpaper instance is asked to be.
struct CreationRequest {
    /// Which of the extension's wallpapers; nothing leaves the choice to it.
    std::optional<std::string> configuration = std::nullopt;
    /// Points.
    Size size = {};
    /// Pixels per point.
    double scaleFactor = 1.0;
    std::optional<std::uint32_t> directDisplayID = std::nullopt;
    bool isPreview = false;
    /// One of presentationModes().
    std::string presentationMode = "default";
    /// One of activityStates().
    std::string activityState = "active";
    /// The absolute text of a file URL.
    std::optional<std::string> cacheDirectory = std::nullopt;
};

struct UpdateRequest {
    std::string presentationMode = "default";
    std::string activityState = "active";
    /// Both or neither.
    std::optional<Size> size = std::nullopt;
    std::optional<double> scaleFactor = std::nullopt;
};

std::span<const std::string_view> presentationModes();
std::span<const std::string_view> activityStates();

ObjectRef makeWallpaperID(const UUID& identifier);
/// Null when a mode or state is none of the names above.
ObjectRef makeCreationRequest(const CreationRequest& request);
ObjectRef makeUpdateRequest(const UpdateRequest& request);
ObjectRef makeContentTypeSet();

/// The identifier in the reply to an acquire; nothing when the object is no remote context.
std::optional<std::uint32_t> remoteContextID(const Object& reply);

} // namespace vantor::agent
