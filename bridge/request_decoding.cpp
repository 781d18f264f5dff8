#include "bridge/request_decoding.h"

#include "platform/utf8.h"

namespace vantor::PrivateBridge {
namespace {

/// One search: what it may still look at.
class Search {
  public:
    ReflectedRef find(std::string_view key, const ReflectedValue& value, int depth) {
        if (depth > kMaxSearchDepth) {
            return nullptr;
        }
        for (const ReflectedChild& child : value.children()) {
            if (!visit()) {
                return nullptr;
            }
            if (child.label && *child.label == key) {
                return child.value;
            }
            if (ReflectedRef found = find(key, *child.value, depth + 1)) {
                return found;
            }
        }
        return nullptr;
    }

    std::optional<UUID> firstUUID(const ReflectedValue& value, int depth) {
        if (auto identifier = value.asUUID()) {
            return identifier;
        }
        if (depth > kMaxSearchDepth) {
            return std::nullopt;
        }
        for (const ReflectedChild& child : value.children()) {
            if (!visit()) {
                return std::nullopt;
            }
            if (auto found = firstUUID(*child.value, depth + 1)) {
                return found;
            }
        }
        return std::nullopt;
    }

  private:
    bool visit() { return remaining_ > 0 && remaining_-- > 0; }

    std::size_t remaining_ = kMaxVisitedValues;
};

std::string nameUnder(std::string_view key, const ReflectedRef& request, std::string fallback) {
    return caseName(find(key, request, 0)).value_or(std::move(fallback));
}

void readDestination(const ReflectedRef& destination, Creation& creation) {
    if (const ReflectedRef value = find("size", destination, 0)) {
        const auto size = value->asSize();
        if (size && size->width > 0) {
            creation.size = *size;
        }
    }
    if (const ReflectedRef value = find("scaleFactor", destination, 0)) {
        const auto scale = value->asDouble();
        if (scale && *scale > 0) {
            creation.scale = *scale;
        }
    }
    if (const ReflectedRef value = find("directDisplayID", destination, 0)) {
        creation.displayID = value->asUInt32();
    }
}

} // namespace

ReflectedRef find(std::string_view key, const ReflectedRef& value, int depth) {
    return value ? Search().find(key, *value, depth) : nullptr;
}

std::optional<UUID> firstUUID(const ReflectedRef& value, int depth) {
    return value ? Search().firstUUID(*value, depth) : std::nullopt;
}

std::optional<std::string> caseName(const ReflectedRef& value) {
    if (!value) {
        return std::nullopt;
    }
    if (value->isEnumeration()) {
        const std::vector<ReflectedChild> children = value->children();
        if (!children.empty() && children.front().label) {
            return children.front().label;
        }
    }
    return value->description();
}

Creation parseCreation(const ReflectedRef& request) {
    Creation creation;
    if (!request) {
        return creation;
    }
    if (const ReflectedRef value = find("configuration", request, 0)) {
        const auto bytes = value->asBytes();
        std::string text;
        if (bytes) {
            text.assign(bytes->begin(), bytes->end());
        }
        if (!text.empty() && isUTF8(text)) {
            creation.configuration = std::move(text);
        }
    }
    if (const ReflectedRef destination = find("destination", request, 0)) {
        readDestination(destination, creation);
    }
    if (const ReflectedRef value = find("isPreview", request, 0)) {
        creation.isPreview = value->asBoolean().value_or(false);
    }
    creation.presentationMode = nameUnder("presentationMode", request, creation.presentationMode);
    creation.activityState = nameUnder("activityState", request, creation.activityState);
    if (const ReflectedRef value = find("cacheDirectory", request, 0)) {
        creation.cacheDirectory = value->asFileURL();
    }
    return creation;
}

Update parseUpdate(const ReflectedRef& request) {
    Update update;
    if (!request) {
        return update;
    }
    update.presentationMode = nameUnder("presentationMode", request, update.presentationMode);
    update.activityState = nameUnder("activityState", request, update.activityState);
    if (const ReflectedRef destination = find("destination", request, 0)) {
        if (const ReflectedRef value = find("size", destination, 0)) {
            update.size = value->asSize();
        }
        if (const ReflectedRef value = find("scaleFactor", destination, 0)) {
            update.scale = value->asDouble();
        }
    }
    return update;
}

} // namespace vantor::PrivateBridge
