#pragma once
// One payload for each of the agent's classes, in the protocol's order.

#include "platform/property_list.h"
#include "tests/support/picker_records.h"

#include <string_view>
#include <vector>

namespace vantor {

struct KitPayload {
    std::string_view className;
    /// The payload type's name.
    std::string_view key;
    PropertyList payload;
};

inline std::vector<KitPayload> kitPayloads() {
    using Array = PropertyList::Array;
    using Dictionary = PropertyListDictionary;
    const auto plainCase = [](const char* name) { return Dictionary{{name, Dictionary{}}}; };
    const auto url = [](const char* text) { return Dictionary{{"relative", text}}; };
    const PropertyList choice = encodeRecord(fullItem().choice.id).value();
    const Dictionary destination{{"size", Array{1280.0, 720.5}},
                                 {"scaleFactor", 1.5},
                                 {"directDisplayID", std::int64_t{4294967295}}};
    return {
        {"WallpaperIDXPC", "WallpaperID",
         Dictionary{{"id", "0F0E0D0C-0B0A-0908-0706-050403020100"}}},
        {"WallpaperCreationRequestXPC", "WallpaperCreationRequest",
         Dictionary{{"configuration", Bytes{'p', 0xc3, 0xa4}},
                    {"destination", destination},
                    {"isPreview", true},
                    {"presentationMode", plainCase("locked")},
                    {"activityState", plainCase("suspended")},
                    {"cacheDirectory", url("file:///tmp/a%20b/")}}},
        {"WallpaperUpdateRequestXPC", "WallpaperUpdateRequest",
         Dictionary{{"presentationMode", plainCase("default")},
                    {"activityState", plainCase("active")},
                    {"destination", destination}}},
        {"WallpaperRemoteContextXPC", "UInt32", std::int64_t{4294967295}},
        {"WallpaperSnapshotXPC", "WallpaperSnapshot",
         Dictionary{{"image", url("file:///s.png")}, {"size", Array{1.0, 2.0}}}},
        {"WallpaperContentTypeSetXPC", "WallpaperContentTypeSet",
         Dictionary{{"contentTypes", Array{plainCase("desktop"), plainCase("screenSaver")}}}},
        {"WallpaperChoiceIDXPC", "WallpaperChoiceID", choice},
        {"WallpaperChoiceIDsXPC", "WallpaperChoiceIDs", Dictionary{{"ids", Array{choice, choice}}}},
        {"WallpaperExtensionChoiceRequestXPC", "WallpaperExtensionChoiceRequest",
         Dictionary{{"files", Array{url("file:///one"), url("file:///two")}}}},
        {"WallpaperChoiceRequestAdditionResultXPC", "WallpaperChoiceRequestAdditionResult",
         Dictionary{{"added", Dictionary{{"choiceID", choice}}}}},
        {"WallpaperDebugRequestXPC", "WallpaperDebugRequest",
         Dictionary{{"command", "dump"}, {"arguments", Array{"ä", ""}}}},
        {"WallpaperDebugResponseXPC", "WallpaperDebugResponse", Dictionary{{"text", "fine"}}},
        {"WallpaperMigrationVersionXPC", "WallpaperMigrationVersion",
         Dictionary{{"version", std::int64_t{INT64_MIN}}}},
        {"WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels",
         encodeRecord(fullPicker()).value()},
        {"AuditTokenXPC", "AuditToken", Dictionary{{"token", Bytes(32, 9)}}},
    };
}

} // namespace vantor
