#include "agent/control/picker_json.h"

#include <nlohmann/json.hpp>

#include <charconv>
#include <utility>

namespace vantor::agent {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const PickerItem& item) {
    return {{"id", item.id},
            {"name", item.name},
            {"description", item.description},
            {"configuration", item.configuration},
            {"provider", item.provider},
            {"thumbnail", item.thumbnail},
            {"thumbnailPath", pathOfFileURL(item.thumbnail)},
            {"badge", item.badge},
            {"showInTopLevel", item.showInTopLevel},
            {"sortOrder", item.sortOrder},
            {"menu", item.menu}};
}

Json toJson(const std::vector<PickerGroup>& groups) {
    Json list = Json::array();
    for (const PickerGroup& group : groups) {
        Json items = Json::array();
        for (const PickerItem& item : group.items) {
            items.push_back(toJson(item));
        }
        list.push_back({{"id", group.id},
                        {"name", group.name},
                        {"sortOrder", group.sortOrder},
                        {"items", std::move(items)}});
    }
    return list;
}

std::string text(const Json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_string() ? found->get<std::string>() : std::string();
}

std::int64_t number(const Json& object, const char* name) {
    const auto found = object.find(name);
    return found != object.end() && found->is_number_integer() ? found->get<std::int64_t>() : 0;
}

/// The elements of a list that have the wanted shape.
std::vector<Json> list(const Json& object, const char* name, bool (Json::*shape)() const noexcept) {
    std::vector<Json> elements;
    if (const auto found = object.find(name); found != object.end() && found->is_array()) {
        for (const Json& element : *found) {
            if ((element.*shape)()) {
                elements.push_back(element);
            }
        }
    }
    return elements;
}

PickerItem itemFrom(const Json& object) {
    const auto shown = object.find("showInTopLevel");
    PickerItem item{.id = text(object, "id"),
                    .name = text(object, "name"),
                    .description = text(object, "description"),
                    .thumbnail = text(object, "thumbnail"),
                    .configuration = text(object, "configuration"),
                    .provider = text(object, "provider"),
                    .badge = text(object, "badge"),
                    .showInTopLevel = shown != object.end() && *shown == true,
                    .sortOrder = number(object, "sortOrder")};
    for (const Json& title : list(object, "menu", &Json::is_string)) {
        item.menu.push_back(title.get<std::string>());
    }
    return item;
}

std::vector<PickerGroup> groupsFrom(const Json& root, const char* name) {
    std::vector<PickerGroup> groups;
    for (const Json& object : list(root, name, &Json::is_object)) {
        PickerGroup& group =
            groups.emplace_back(PickerGroup{.id = text(object, "id"),
                                            .name = text(object, "name"),
                                            .sortOrder = number(object, "sortOrder"),
                                            .items = {}});
        for (const Json& item : list(object, "items", &Json::is_object)) {
            group.items.push_back(itemFrom(item));
        }
    }
    return groups;
}

} // namespace

std::string pickerJson(const Picker& picker) {
    const Json json{{"desktop", toJson(picker.desktop)},
                    {"screenSaver", toJson(picker.screenSaver)}};
    return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

std::optional<Picker> readPickerJson(std::string_view text) {
    const Json root = Json::parse(text, nullptr, false);
    if (!root.is_object()) {
        return std::nullopt;
    }
    return Picker{.desktop = groupsFrom(root, "desktop"),
                  .screenSaver = groupsFrom(root, "screenSaver")};
}

std::string pathOfFileURL(std::string_view url) {
    constexpr std::string_view kScheme = "file://";
    if (!url.starts_with(kScheme)) {
        return {};
    }
    // Between the scheme and the path stands the host, as a rule an empty one.
    const std::string_view path = url.substr(std::min(url.find('/', kScheme.size()), url.size()));
    std::string out;
    for (std::size_t at = 0; at < path.size(); ++at) {
        unsigned char byte = 0;
        const char* digits = path.data() + at + 1;
        if (path[at] == '%' && at + 2 < path.size() &&
            std::from_chars(digits, digits + 2, byte, 16).ptr == digits + 2) {
            out += static_cast<char>(byte);
            at += 2;
        } else {
            out += path[at];
        }
    }
    return out;
}

} // namespace vantor::agent
