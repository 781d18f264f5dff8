#pragma once
// Records of the picker that tests and benchmarks encode: one with only what must be there, one
// with everything.

#include "bridge/settings_view_models.h"

namespace vantor {

inline SettingsItem plainItem() {
    return {.id = {"plasma"},
            .localizedName = "Plasma",
            .thumbnail = Thumbnail::image("/tmp/a b.png"),
            .choice = {.id = {.descriptor = {.provider = "com.nimbara.app.lockscreen",
                                             .files = {},
                                             .configuration = {'p'}}},
                       .localizedDescription = "Live",
                       .thumbnail = Thumbnail::image("/tmp/a b.png"),
                       .isDownloaded = true}};
}

inline SettingsItem fullItem() {
    return {.id = {"match-desktop"},
            .groupID = StringID{"group"},
            .subgroupID = StringID{"subgroup"},
            .localizedName = "Wie der Schreibtisch – 夜 🌌",
            .localizedInformativeText = "two\nlines",
            .thumbnail = Thumbnail::image("/tmp/Größe 夜.png"),
            .choice = {.id = {.descriptor = {.provider = "com.nimbara.app.lockscreen",
                                             .files = {{.path = "/f/ä"}},
                                             .configuration = {0, 255, 10}}},
                       .localizedDescription = "Follows",
                       .thumbnail = Thumbnail::image("/tmp/Größe 夜.png"),
                       .isDownloaded = true},
            .contentBadge = SettingsItem::ContentBadge::video,
            .showInTopLevel = true,
            .sortOrder = INT64_MAX,
            .disposability = Disposability::purgeable,
            .toolTip = "",
            .contextMenu = ContextMenu{
                .items = {{.id = {"open-app"}, .localizedTitle = "Open VantorEngine…"},
                          {.id = {"remove"}, .localizedTitle = "Remove", .isDestructive = true}}}};
}

inline SettingsGroup fullGroup() {
    return {.id = {"com.nimbara.shaders"},
            .localizedName = "VantorEngine",
            .systemImageName = "sparkles",
            .disposability = Disposability::removable,
            .sortID = {"com.apple.wallpaper.aerials"},
            .shouldHideItemLabels = true,
            .sortOrder = INT64_MIN,
            .items = {fullItem(), plainItem()}};
}

inline SettingsViewModels fullPicker() {
    return {.desktop =
                SettingsViewModel{.groups = {fullGroup()},
                                  .refreshPolicy = SettingsViewModel::RefreshPolicy::discretionary,
                                  .isModificationDisabled = true},
            .screenSaver = SettingsViewModel{.groups = {fullGroup()}}};
}

} // namespace vantor
