#pragma once
// What the wallpaper picker shows, as the agent decodes it. Plain values; each field's name is its
// key. Only ever encoded.

#include "bridge/file_url.h"
#include "bridge/keyed_record.h"
#include "platform/property_list.h"

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <variant>
#include <vector>

namespace vantor {

struct StringID {
    std::string id;

    static constexpr auto fields() { return std::tuple{Field{"id", &StringID::id}}; }
};

/// Whether content can be removed.
enum class Disposability { none, removable, purgeable };

constexpr auto caseNames(Disposability) {
    return std::array<std::string_view, 3>{"none", "removable", "purgeable"};
}

/// A picture, of which there is one kind.
struct Thumbnail {
    struct Image {
        FileURL url;

        static constexpr auto fields() { return std::tuple{Field{"url", &Image::url}}; }
    };

    std::variant<Image> payload;

    static constexpr std::array<std::string_view, 1> kCaseNames{"image"};
    static Thumbnail image(std::filesystem::path file) {
        return {.payload = Image{.url = {.path = std::move(file)}}};
    }
};

/// What a choice consists of.
struct ChoiceDescriptor {
    /// The identifier of the extension that provides it.
    std::string provider;
    std::vector<FileURL> files;
    /// Which wallpaper of the provider is meant; comes back in an acquire request.
    Bytes configuration;

    static constexpr auto fields() {
        return std::tuple{Field{"provider", &ChoiceDescriptor::provider},
                          Field{"files", &ChoiceDescriptor::files},
                          Field{"configuration", &ChoiceDescriptor::configuration}};
    }
};

/// What selecting an item chooses.
struct Choice {
    struct ID {
        ChoiceDescriptor descriptor;

        static constexpr auto fields() { return std::tuple{Field{"descriptor", &ID::descriptor}}; }
    };
    /// Has no values: a list of options is empty.
    struct Option {
        Option() = delete;

        static constexpr auto fields() { return std::tuple{}; }
    };

    ID id;
    std::string localizedDescription;
    Thumbnail thumbnail;
    bool isDownloaded = false;
    std::vector<Option> options = {};

    static constexpr auto fields() {
        return std::tuple{
            Field{"id", &Choice::id}, Field{"localizedDescription", &Choice::localizedDescription},
            Field{"thumbnail", &Choice::thumbnail}, Field{"isDownloaded", &Choice::isDownloaded},
            Field{"options", &Choice::options}};
    }
};

struct ContextMenu {
    struct Item {
        /// Sent back when the user invokes the entry.
        StringID id;
        std::string localizedTitle;
        bool isDestructive = false;

        static constexpr auto fields() {
            return std::tuple{Field{"id", &Item::id},
                              Field{"localizedTitle", &Item::localizedTitle},
                              Field{"isDestructive", &Item::isDestructive}};
        }
    };

    std::vector<Item> items;

    static constexpr auto fields() { return std::tuple{Field{"items", &ContextMenu::items}}; }
};

struct SettingsItem {
    /// Drawn on the thumbnail.
    enum class ContentBadge { none, dynamic, video };

    StringID id;
    std::optional<StringID> groupID = std::nullopt;
    std::optional<StringID> subgroupID = std::nullopt;
    std::string localizedName;
    std::optional<std::string> localizedInformativeText = std::nullopt;
    Thumbnail thumbnail;
    Choice choice;
    ContentBadge contentBadge = ContentBadge::none;
    /// Also shown at the picker's top level.
    bool showInTopLevel = false;
    std::int64_t sortOrder = 0;
    Disposability disposability = Disposability::none;
    std::optional<std::string> toolTip = std::nullopt;
    std::optional<ContextMenu> contextMenu = std::nullopt;

    static constexpr auto fields() {
        return std::tuple{
            Field{"id", &SettingsItem::id},
            Field{"groupID", &SettingsItem::groupID},
            Field{"subgroupID", &SettingsItem::subgroupID},
            Field{"localizedName", &SettingsItem::localizedName},
            Field{"localizedInformativeText", &SettingsItem::localizedInformativeText},
            Field{"thumbnail", &SettingsItem::thumbnail},
            Field{"choice", &SettingsItem::choice},
            Field{"contentBadge", &SettingsItem::contentBadge},
            Field{"showInTopLevel", &SettingsItem::showInTopLevel},
            Field{"sortOrder", &SettingsItem::sortOrder},
            Field{"disposability", &SettingsItem::disposability},
            Field{"toolTip", &SettingsItem::toolTip},
            Field{"contextMenu", &SettingsItem::contextMenu}};
    }
};

constexpr auto caseNames(SettingsItem::ContentBadge) {
    return std::array<std::string_view, 3>{"none", "dynamic", "video"};
}

struct SettingsGroup {
    StringID id;
    std::string localizedName;
    /// Names a symbol of the system.
    std::optional<std::string> systemImageName = std::nullopt;
    Disposability disposability = Disposability::none;
    /// Sorts the group among others.
    StringID sortID;
    bool shouldHideItemLabels = false;
    std::int64_t sortOrder = 0;
    std::vector<SettingsItem> items = {};

    static constexpr auto fields() {
        return std::tuple{Field{"id", &SettingsGroup::id},
                          Field{"localizedName", &SettingsGroup::localizedName},
                          Field{"systemImageName", &SettingsGroup::systemImageName},
                          Field{"disposability", &SettingsGroup::disposability},
                          Field{"sortID", &SettingsGroup::sortID},
                          Field{"shouldHideItemLabels", &SettingsGroup::shouldHideItemLabels},
                          Field{"sortOrder", &SettingsGroup::sortOrder},
                          Field{"items", &SettingsGroup::items}};
    }
};

struct SettingsViewModel {
    /// How eagerly the agent refreshes the model.
    enum class RefreshPolicy { default_, discretionary };

    std::vector<SettingsGroup> groups;
    RefreshPolicy refreshPolicy = RefreshPolicy::default_;
    /// The user may not change the selection.
    bool isModificationDisabled = false;

    static constexpr auto fields() {
        return std::tuple{
            Field{"groups", &SettingsViewModel::groups},
            Field{"refreshPolicy", &SettingsViewModel::refreshPolicy},
            Field{"isModificationDisabled", &SettingsViewModel::isModificationDisabled}};
    }
};

constexpr auto caseNames(SettingsViewModel::RefreshPolicy) {
    return std::array<std::string_view, 2>{"default", "discretionary"};
}

struct SettingsViewModels {
    /// The payload type's name, under which the agent's class reads it.
    static constexpr std::string_view kPayloadName = "WallpaperSettingsViewModels";

    std::optional<SettingsViewModel> desktop = std::nullopt;
    std::optional<SettingsViewModel> screenSaver = std::nullopt;

    static constexpr auto fields() {
        return std::tuple{Field{"desktop", &SettingsViewModels::desktop},
                          Field{"screenSaver", &SettingsViewModels::screenSaver}};
    }
};

} // namespace vantor
