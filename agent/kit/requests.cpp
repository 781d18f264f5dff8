#include "agent/kit/requests.h"

#include "agent/kit/kit_classes.h"

#include <array>

namespace vantor::agent {
namespace {

constexpr std::array<std::string_view, 3> kPresentationModes{"default", "idle", "locked"};
constexpr std::array<std::string_view, 2> kActivityStates{"active", "suspended"};
constexpr std::string_view kRemoteContextClass = "WallpaperRemoteContextXPC";

/// A case without payload.
PropertyList enumerationCase(std::string_view name) {
    PropertyListDictionary value;
    value.append(std::string(name), PropertyListDictionary());
    return value;
}

PropertyListDictionary destination(const Size& size, double scaleFactor) {
    return {{"size", PropertyList::Array{size.width, size.height}}, {"scaleFactor", scaleFactor}};
}

} // namespace

std::span<const std::string_view> presentationModes() { return kPresentationModes; }

std::span<const std::string_view> activityStates() { return kActivityStates; }

ObjectRef makeWallpaperID(const UUID& identifier) {
    return makeKitObject("WallpaperIDXPC", PropertyListDictionary{{"id", identifier.text()}});
}

ObjectRef makeCreationRequest(const CreationRequest& request) {
    PropertyListDictionary target = destination(request.size, request.scaleFactor);
    if (request.directDisplayID) {
        target.append("directDisplayID", *request.directDisplayID);
    }
    PropertyListDictionary payload{
        {"destination", std::move(target)},
        {"isPreview", request.isPreview},
        {"presentationMode", enumerationCase(request.presentationMode)},
        {"activityState", enumerationCase(request.activityState)},
    };
    if (request.configuration) {
        payload.append("configuration",
                       Bytes(request.configuration->begin(), request.configuration->end()));
    }
    if (request.cacheDirectory) {
        payload.append("cacheDirectory",
                       PropertyListDictionary{{"relative", *request.cacheDirectory}});
    }
    return makeKitObject("WallpaperCreationRequestXPC", std::move(payload));
}

ObjectRef makeUpdateRequest(const UpdateRequest& request) {
    PropertyListDictionary payload{
        {"presentationMode", enumerationCase(request.presentationMode)},
        {"activityState", enumerationCase(request.activityState)},
    };
    if (request.size && request.scaleFactor) {
        payload.append("destination", destination(*request.size, *request.scaleFactor));
    }
    return makeKitObject("WallpaperUpdateRequestXPC", std::move(payload));
}

ObjectRef makeContentTypeSet() {
    return makeKitObject(
        "WallpaperContentTypeSetXPC",
        PropertyListDictionary{
            {"contentTypes",
             PropertyList::Array{enumerationCase("desktop"), enumerationCase("screenSaver")}}});
}

std::optional<std::uint32_t> remoteContextID(const Object& reply) {
    if (reply.objectClass().name() != kRemoteContextClass) {
        return std::nullopt;
    }
    for (const ReflectedChild& child : reply.reflect()->children()) {
        if (const auto identifier = child.value->asUInt32()) {
            return identifier;
        }
    }
    return std::nullopt;
}

} // namespace vantor::agent
