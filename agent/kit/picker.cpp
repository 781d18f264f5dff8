#include "agent/kit/picker.h"

#include "agent/kit/kit_classes.h"

#include <algorithm>
#include <string_view>

namespace vantor::agent {
namespace {

constexpr std::string_view kViewModelsClass = "WallpaperSettingsViewModelsXPC";

/// What stands under these keys, each in the value before it. The payload fits its type, so that
/// only optional fields can be missing: null then.
const PropertyList* at(const PropertyList& root, std::initializer_list<std::string_view> path) {
    const PropertyList* value = &root;
    for (const std::string_view key : path) {
        value = value->dictionary()->find(key);
        if (value == nullptr) {
            return nullptr;
        }
    }
    return value;
}

std::string text(const PropertyList& root, std::initializer_list<std::string_view> path) {
    return *at(root, path)->string();
}

std::string caseName(const PropertyList& enumeration) {
    return enumeration.dictionary()->begin()->key;
}

PickerItem readItem(const PropertyList& item) {
    PickerItem read{
        .id = text(item, {"id", "id"}),
        .name = text(item, {"localizedName"}),
        .description = text(item, {"choice", "localizedDescription"}),
        .thumbnail = text(item, {"thumbnail", "image", "url", "relative"}),
        .provider = text(item, {"choice", "id", "descriptor", "provider"}),
        .badge = caseName(*at(item, {"contentBadge"})),
        .showInTopLevel = *at(item, {"showInTopLevel"})->boolean(),
        .sortOrder = *at(item, {"sortOrder"})->integer(),
    };
    const Bytes& configuration = *at(item, {"choice", "id", "descriptor", "configuration"})->data();
    read.configuration.assign(configuration.begin(), configuration.end());
    if (const PropertyList* entries = at(item, {"contextMenu", "items"})) {
        for (const PropertyList& entry : *entries->array()) {
            read.menu.push_back(text(entry, {"localizedTitle"}));
        }
    }
    return read;
}

std::vector<PickerGroup> readModel(const PropertyList* model) {
    std::vector<PickerGroup> groups;
    if (model == nullptr) {
        return groups;
    }
    for (const PropertyList& group : *at(*model, {"groups"})->array()) {
        PickerGroup& read =
            groups.emplace_back(PickerGroup{.id = text(group, {"id", "id"}),
                                            .name = text(group, {"localizedName"}),
                                            .sortOrder = *at(group, {"sortOrder"})->integer(),
                                            .items = {}});
        for (const PropertyList& item : *at(group, {"items"})->array()) {
            read.items.push_back(readItem(item));
        }
        std::ranges::stable_sort(read.items, {}, &PickerItem::sortOrder);
    }
    std::ranges::stable_sort(groups, {}, &PickerGroup::sortOrder);
    return groups;
}

} // namespace

std::optional<Picker> readPicker(const Object& viewModels) {
    const PropertyList* payload =
        viewModels.objectClass().name() == kViewModelsClass ? kitPayload(viewModels) : nullptr;
    if (payload == nullptr) {
        return std::nullopt;
    }
    return Picker{.desktop = readModel(at(*payload, {"desktop"})),
                  .screenSaver = readModel(at(*payload, {"screenSaver"}))};
}

} // namespace vantor::agent
