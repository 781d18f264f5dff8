// What the wallpaper picker shows.

#include "library/lock_screen_library.h"

#include <string>
#include <string_view>
#include <utility>

namespace vantor {
namespace {

/// Sorts the group with the system's aerial wallpapers, before the groups that count from 0.
constexpr std::string_view kSortID = "com.apple.wallpaper.aerials";
constexpr std::int64_t kGroupSortOrder = -100;

/// What the items have in common: a live picture and the way to the host application.
SettingsItem item(std::string id, std::string name, std::string description,
                  const std::filesystem::path& picture, const std::string& provider,
                  std::int64_t sortOrder) {
    Bytes configuration(id.begin(), id.end());
    return {.id = {std::move(id)},
            .localizedName = std::move(name),
            .thumbnail = Thumbnail::image(picture),
            .choice = {.id = {.descriptor = {.provider = provider,
                                             .files = {},
                                             .configuration = std::move(configuration)}},
                       .localizedDescription = std::move(description),
                       .thumbnail = Thumbnail::image(picture),
                       .isDownloaded = true},
            .contentBadge = SettingsItem::ContentBadge::dynamic,
            .showInTopLevel = true,
            .sortOrder = sortOrder,
            .contextMenu = ContextMenu{
                .items = {{.id = {"open-app"}, .localizedTitle = "Open VantorEngine…"}}}};
}

} // namespace

SettingsViewModels LockScreenLibrary::viewModels() {
    const std::string& provider = identifiers_.extensionBundleID;
    SettingsGroup group{.id = {identifiers_.groupID},
                        .localizedName = identifiers_.groupName,
                        .sortID = {std::string(kSortID)},
                        .sortOrder = kGroupSortOrder};
    group.items.push_back(item(std::string(kMatchDesktop), "Same as Desktop",
                               "Follows the shader you pick in VantorEngine", matchThumbnailURL(),
                               provider, 0));
    for (const ShaderCatalog::Entry& entry : ShaderCatalog::all) {
        group.items.push_back(item(
            std::string(entry.id), std::string(entry.title), "Live Metal wallpaper by VantorEngine",
            thumbnails_.ofEntry(entry), provider, static_cast<std::int64_t>(group.items.size())));
    }
    const SettingsViewModel model{.groups = {std::move(group)}};
    return {.desktop = model, .screenSaver = model};
}

std::filesystem::path LockScreenLibrary::matchThumbnailURL() {
    const Resolved shown =
        resolve(std::string(kMatchDesktop), std::nullopt).value_or(resolve(matchFallback()));
    if (shown.source) {
        return thumbnails_.ofDesktop(shown);
    }
    return shown.still.value_or(thumbnails_.ofEntry(matchFallback()));
}

} // namespace vantor
