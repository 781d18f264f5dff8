#include "agent/kit/payload_types.h"

#include <array>

namespace vantor::agent {
namespace {

using Field = PayloadField;
using Kind = PayloadKind;
using Type = PayloadType;

constexpr Type kBoolean{.kind = Kind::boolean, .name = "Bool"};
constexpr Type kInteger{.kind = Kind::integer, .name = "Int"};
constexpr Type kUInt32{.kind = Kind::uint32, .name = "UInt32"};
constexpr Type kReal{.kind = Kind::real, .name = "Double"};
constexpr Type kText{.kind = Kind::text, .name = "String"};
constexpr Type kData{.kind = Kind::data, .name = "Data"};
constexpr Type kUUID{.kind = Kind::uuid, .name = "UUID"};
constexpr Type kSize{.kind = Kind::size, .name = "CGSize"};
constexpr Type kURL{.kind = Kind::url, .name = "URL"};

constexpr Type record(std::string_view name, std::span<const Field> fields) {
    return {.kind = Kind::record, .name = name, .fields = fields};
}

constexpr Type enumeration(std::string_view name, std::span<const Field> cases) {
    return {.kind = Kind::enumeration, .name = name, .fields = cases};
}

constexpr Type list(std::string_view name, const Type& element) {
    return {.kind = Kind::list, .name = name, .element = &element};
}

/// The payload of a case that has none.
constexpr Type kNothing = record("Void", {});

constexpr std::array kWallpaperIDFields{Field{"id", kUUID}};
constexpr Type kWallpaperID = record("WallpaperID", kWallpaperIDFields);

// Requests.

constexpr std::array kPresentationModeCases{Field{"default", kNothing}, Field{"idle", kNothing},
                                            Field{"locked", kNothing}};
constexpr Type kPresentationMode = enumeration("PresentationMode", kPresentationModeCases);

constexpr std::array kActivityStateCases{Field{"active", kNothing}, Field{"suspended", kNothing}};
constexpr Type kActivityState = enumeration("ActivityState", kActivityStateCases);

constexpr std::array kDestinationFields{Field{"size", kSize}, Field{"scaleFactor", kReal},
                                        Field{"directDisplayID", kUInt32, Presence::optional}};
constexpr Type kDestination = record("Destination", kDestinationFields);

constexpr std::array kCreationFields{
    Field{"configuration", kData, Presence::optional},
    Field{"destination", kDestination},
    Field{"isPreview", kBoolean},
    Field{"presentationMode", kPresentationMode},
    Field{"activityState", kActivityState},
    Field{"cacheDirectory", kURL, Presence::optional},
};
constexpr Type kCreationRequest = record("WallpaperCreationRequest", kCreationFields);

constexpr std::array kUpdateFields{
    Field{"presentationMode", kPresentationMode},
    Field{"activityState", kActivityState},
    Field{"destination", kDestination, Presence::optional},
};
constexpr Type kUpdateRequest = record("WallpaperUpdateRequest", kUpdateFields);

// The picker's records.

constexpr std::array kStringIDFields{Field{"id", kText}};
constexpr Type kStringID = record("StringID", kStringIDFields);

constexpr std::array kDisposabilities{Field{"none", kNothing}, Field{"removable", kNothing},
                                      Field{"purgeable", kNothing}};
constexpr Type kDisposability = enumeration("Disposability", kDisposabilities);

constexpr std::array kImageFields{Field{"url", kURL}};
constexpr Type kImage = record("Image", kImageFields);
constexpr std::array kThumbnailCases{Field{"image", kImage}};
constexpr Type kThumbnail = enumeration("Thumbnail", kThumbnailCases);

constexpr Type kURLs = list("[URL]", kURL);
constexpr std::array kDescriptorFields{Field{"provider", kText}, Field{"files", kURLs},
                                       Field{"configuration", kData}};
constexpr Type kDescriptor = record("ChoiceDescriptor", kDescriptorFields);

constexpr std::array kChoiceIDFields{Field{"descriptor", kDescriptor}};
constexpr Type kChoiceID = record("WallpaperChoiceID", kChoiceIDFields);

/// A choice has no options, so nothing but the empty list conforms.
constexpr Type kOption = enumeration("Option", {});
constexpr Type kOptions = list("[Option]", kOption);
constexpr std::array kChoiceFields{
    Field{"id", kChoiceID},         Field{"localizedDescription", kText},
    Field{"thumbnail", kThumbnail}, Field{"isDownloaded", kBoolean},
    Field{"options", kOptions},
};
constexpr Type kChoice = record("Choice", kChoiceFields);

constexpr std::array kMenuItemFields{Field{"id", kStringID}, Field{"localizedTitle", kText},
                                     Field{"isDestructive", kBoolean}};
constexpr Type kMenuItem = record("ContextMenu.Item", kMenuItemFields);
constexpr Type kMenuItems = list("[ContextMenu.Item]", kMenuItem);
constexpr std::array kMenuFields{Field{"items", kMenuItems}};
constexpr Type kMenu = record("ContextMenu", kMenuFields);

constexpr std::array kBadges{Field{"none", kNothing}, Field{"dynamic", kNothing},
                             Field{"video", kNothing}};
constexpr Type kBadge = enumeration("SettingsItem.ContentBadge", kBadges);

constexpr std::array kItemFields{
    Field{"id", kStringID},
    Field{"groupID", kStringID, Presence::optional},
    Field{"subgroupID", kStringID, Presence::optional},
    Field{"localizedName", kText},
    Field{"localizedInformativeText", kText, Presence::optional},
    Field{"thumbnail", kThumbnail},
    Field{"choice", kChoice},
    Field{"contentBadge", kBadge},
    Field{"showInTopLevel", kBoolean},
    Field{"sortOrder", kInteger},
    Field{"disposability", kDisposability},
    Field{"toolTip", kText, Presence::optional},
    Field{"contextMenu", kMenu, Presence::optional},
};
constexpr Type kItem = record("SettingsItem", kItemFields);
constexpr Type kItems = list("[SettingsItem]", kItem);

constexpr std::array kGroupFields{
    Field{"id", kStringID},
    Field{"localizedName", kText},
    Field{"systemImageName", kText, Presence::optional},
    Field{"disposability", kDisposability},
    Field{"sortID", kStringID},
    Field{"shouldHideItemLabels", kBoolean},
    Field{"sortOrder", kInteger},
    Field{"items", kItems},
};
constexpr Type kGroup = record("SettingsGroup", kGroupFields);
constexpr Type kGroups = list("[SettingsGroup]", kGroup);

constexpr std::array kRefreshPolicies{Field{"default", kNothing}, Field{"discretionary", kNothing}};
constexpr Type kRefreshPolicy = enumeration("SettingsViewModel.RefreshPolicy", kRefreshPolicies);

constexpr std::array kViewModelFields{Field{"groups", kGroups},
                                      Field{"refreshPolicy", kRefreshPolicy},
                                      Field{"isModificationDisabled", kBoolean}};
constexpr Type kViewModel = record("SettingsViewModel", kViewModelFields);

constexpr std::array kViewModelsFields{Field{"desktop", kViewModel, Presence::optional},
                                       Field{"screenSaver", kViewModel, Presence::optional}};
constexpr Type kViewModels = record("WallpaperSettingsViewModels", kViewModelsFields);

// What the extension accepts or answers without looking into it.

constexpr std::array kSnapshotFields{Field{"image", kURL}, Field{"size", kSize}};
constexpr Type kSnapshot = record("WallpaperSnapshot", kSnapshotFields);

constexpr std::array kContentTypes{Field{"desktop", kNothing}, Field{"screenSaver", kNothing}};
constexpr Type kContentType = enumeration("ContentType", kContentTypes);
constexpr Type kContentTypeList = list("[ContentType]", kContentType);
constexpr std::array kContentTypeSetFields{Field{"contentTypes", kContentTypeList}};
constexpr Type kContentTypeSet = record("WallpaperContentTypeSet", kContentTypeSetFields);

constexpr Type kChoiceIDList = list("[WallpaperChoiceID]", kChoiceID);
constexpr std::array kChoiceIDsFields{Field{"ids", kChoiceIDList}};
constexpr Type kChoiceIDs = record("WallpaperChoiceIDs", kChoiceIDsFields);

constexpr std::array kChoiceRequestFields{Field{"files", kURLs}};
constexpr Type kChoiceRequest = record("WallpaperExtensionChoiceRequest", kChoiceRequestFields);

constexpr std::array kAddedFields{Field{"choiceID", kChoiceID}};
constexpr Type kAdded = record("Added", kAddedFields);
constexpr std::array kAdditionResults{Field{"added", kAdded}, Field{"refused", kNothing}};
constexpr Type kAdditionResult =
    enumeration("WallpaperChoiceRequestAdditionResult", kAdditionResults);

constexpr Type kTexts = list("[String]", kText);
constexpr std::array kDebugRequestFields{Field{"command", kText}, Field{"arguments", kTexts}};
constexpr Type kDebugRequest = record("WallpaperDebugRequest", kDebugRequestFields);
constexpr std::array kDebugResponseFields{Field{"text", kText}};
constexpr Type kDebugResponse = record("WallpaperDebugResponse", kDebugResponseFields);

constexpr std::array kMigrationVersionFields{Field{"version", kInteger}};
constexpr Type kMigrationVersion = record("WallpaperMigrationVersion", kMigrationVersionFields);

constexpr std::array kAuditTokenFields{Field{"token", kData}};
constexpr Type kAuditToken = record("AuditToken", kAuditTokenFields);

constexpr std::array<KitClassInfo, 15> kClasses{{
    {"WallpaperIDXPC", "WallpaperID", kWallpaperID},
    {"WallpaperCreationRequestXPC", "WallpaperCreationRequest", kCreationRequest},
    {"WallpaperUpdateRequestXPC", "WallpaperUpdateRequest", kUpdateRequest},
    {"WallpaperRemoteContextXPC", "UInt32", kUInt32},
    {"WallpaperSnapshotXPC", "WallpaperSnapshot", kSnapshot},
    {"WallpaperContentTypeSetXPC", "WallpaperContentTypeSet", kContentTypeSet},
    {"WallpaperChoiceIDXPC", "WallpaperChoiceID", kChoiceID},
    {"WallpaperChoiceIDsXPC", "WallpaperChoiceIDs", kChoiceIDs},
    {"WallpaperExtensionChoiceRequestXPC", "WallpaperExtensionChoiceRequest", kChoiceRequest},
    {"WallpaperChoiceRequestAdditionResultXPC", "WallpaperChoiceRequestAdditionResult",
     kAdditionResult},
    {"WallpaperDebugRequestXPC", "WallpaperDebugRequest", kDebugRequest},
    {"WallpaperDebugResponseXPC", "WallpaperDebugResponse", kDebugResponse},
    {"WallpaperMigrationVersionXPC", "WallpaperMigrationVersion", kMigrationVersion},
    {"WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels", kViewModels},
    {"AuditTokenXPC", "AuditToken", kAuditToken},
}};

} // namespace

std::span<const KitClassInfo> kitClassInfos() { return kClasses; }

} // namespace vantor::agent
