#pragma once
// What an extension offers in the wallpaper picker, as the agent reads it from the view models that
// it was sent. Any thread.

#include "platform/object_runtime.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vantor::agent {

struct PickerItem {
    std::string id;
    std::string name;
    /// What choosing it means.
    std::string description;
    /// The absolute text of a file URL.
    std::string thumbnail;
    /// What an acquire request says to mean this item.
    std::string configuration = {};
    /// The extension that provides it.
    std::string provider;
    /// "none", "dynamic" or "video".
    std::string badge;
    bool showInTopLevel = false;
    std::int64_t sortOrder = 0;
    /// The context menu's titles.
    std::vector<std::string> menu = {};

    bool operator==(const PickerItem&) const = default;
};

struct PickerGroup {
    std::string id;
    std::string name;
    std::int64_t sortOrder = 0;
    std::vector<PickerItem> items;

    bool operator==(const PickerGroup&) const = default;
};

/// Each in the order in which it is shown.
struct Picker {
    std::vector<PickerGroup> desktop;
    std::vector<PickerGroup> screenSaver;

    bool operator==(const Picker&) const = default;
};

/// Nothing when the object is no view models.
std::optional<Picker> readPicker(const Object& viewModels);

} // namespace vantor::agent
