#include "agent/kit/kit_classes.h"
#include "agent/kit/payload_types.h"
#include "agent/kit/requests.h"

#include "bridge/agent_classes.h"
#include "bridge/request_decoding.h"
#include "platform/linux/archive/archive_keyed_archiving.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/wire_object.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <dlfcn.h>

#include <limits>

namespace vantor::agent {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using Array = PropertyList::Array;
using Dictionary = PropertyListDictionary;

const auto kIdentifier = *UUID::parse("0F0E0D0C-0B0A-0908-0706-050403020100");

PropertyList plainCase(const char* name) { return Dictionary{{name, Dictionary{}}}; }
PropertyList url(const char* text) { return Dictionary{{"relative", text}}; }

/// Classes of the agent as a peer knows them.
class KitTest : public ::testing::Test {
  protected:
    KitTest() {
        registerKitClasses(registry_);
        for (const KitClassInfo& info : kitClassInfos()) {
            allowed_.push_back(registry_.classNamed(info.className));
        }
    }

    /// The object as it arrives at the other end.
    ObjectRef sent(const ObjectRef& object) {
        const auto archive = archiveObject(*object);
        EXPECT_TRUE(archive.hasValue());
        auto received = unarchiveObject(archive.value(), allowed_, registry_);
        EXPECT_TRUE(received.hasValue()) << received.error().message;
        return received ? received.value() : nullptr;
    }

    /// Why an object of the class cannot be read from `payload` under `key`.
    std::string whyNot(std::string_view className, std::string_view key,
                       const PropertyList& payload) {
        const auto archive =
            ArchiveKeyedArchiving().archiveRootObject(className, [&](KeyedEncoder& encoder) {
                EXPECT_TRUE(encoder.encodeEncodable(payload, key).hasValue());
            });
        const auto object = unarchiveObject(archive.value(), allowed_, registry_);
        return object ? "it was read" : object.error().message;
    }

    ClassRegistry registry_;
    std::vector<const ObjectClass*> allowed_;
};

CreationRequest fullRequest() {
    return {.configuration = "match-desktop",
            .size = {1280, 720},
            .scaleFactor = 2.0,
            .directDisplayID = std::numeric_limits<std::uint32_t>::max(),
            .isPreview = true,
            .presentationMode = "locked",
            .activityState = "suspended",
            .cacheDirectory = "file:///tmp/a%20b/"};
}

TEST_F(KitTest, TheExtensionKnowsTheClassesByTheSameNamesInTheSameOrder) {
    std::vector<std::string_view> names;
    for (const KitClassInfo& info : kitClassInfos()) {
        names.push_back(info.className);
    }
    const auto expected = PrivateBridge::xpcClassNames();
    EXPECT_EQ(names, std::vector<std::string_view>(expected.begin(), expected.end()));
}

TEST_F(KitTest, EveryClassIsFoundByItsNameAndNoOther) {
    for (const KitClassInfo& info : kitClassInfos()) {
        ASSERT_NE(kitClass(info.className), nullptr);
        EXPECT_EQ(kitClass(info.className)->name(), info.className);
        EXPECT_EQ(registry_.classNamed(info.className), kitClass(info.className));
    }
    EXPECT_EQ(kitClass("WallpaperXPC"), nullptr);
}

TEST_F(KitTest, AnIdentifierIsTheFirstUUIDOfItsObject) {
    const ObjectRef received = sent(makeWallpaperID(kIdentifier));
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(PrivateBridge::firstUUID(received->reflect(), 0), kIdentifier);
}

TEST_F(KitTest, ACreationRequestSaysWhatItWasMadeOf) {
    const ObjectRef received = sent(makeCreationRequest(fullRequest()));
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(PrivateBridge::parseCreation(received->reflect()),
              (PrivateBridge::Creation{.configuration = "match-desktop",
                                       .size = {1280, 720},
                                       .scale = 2.0,
                                       .displayID = std::numeric_limits<std::uint32_t>::max(),
                                       .isPreview = true,
                                       .presentationMode = "locked",
                                       .activityState = "suspended",
                                       .cacheDirectory = "file:///tmp/a%20b/"}));
}

TEST_F(KitTest, ARequestWithoutItsOptionalFieldsLeavesThemAbsent) {
    const ObjectRef received = sent(makeCreationRequest({.size = {800, 600}}));
    ASSERT_NE(received, nullptr);
    EXPECT_EQ(PrivateBridge::parseCreation(received->reflect()),
              (PrivateBridge::Creation{.size = {800, 600}, .scale = 1.0}));
}

TEST_F(KitTest, AnUpdateCarriesItsDestinationOnlyWhenItHasOne) {
    const ObjectRef modes =
        sent(makeUpdateRequest({.presentationMode = "idle", .activityState = "suspended"}));
    EXPECT_EQ(PrivateBridge::parseUpdate(modes->reflect()),
              (PrivateBridge::Update{.presentationMode = "idle", .activityState = "suspended"}));
    const ObjectRef resized = sent(makeUpdateRequest({.size = Size{0, -1}, .scaleFactor = 0.5}));
    EXPECT_EQ(PrivateBridge::parseUpdate(resized->reflect()),
              (PrivateBridge::Update{.size = Size{0, -1}, .scale = 0.5}));
}

TEST_F(KitTest, RequestsHaveOnlyTheModesAndStatesOfTheProtocol) {
    for (const std::string_view mode : presentationModes()) {
        for (const std::string_view state : activityStates()) {
            EXPECT_NE(makeUpdateRequest({.presentationMode = std::string(mode),
                                         .activityState = std::string(state)}),
                      nullptr)
                << mode << "/" << state;
        }
    }
    EXPECT_EQ(makeUpdateRequest({.presentationMode = "upside-down"}), nullptr);
    EXPECT_EQ(makeCreationRequest({.activityState = ""}), nullptr);
}

TEST_F(KitTest, ARemoteContextHandsItsIdentifierOver) {
    const ObjectRef reply =
        sent(makeKitObject("WallpaperRemoteContextXPC", std::uint32_t{0x80000001}));
    EXPECT_EQ(remoteContextID(*reply), 0x80000001U);
    EXPECT_EQ(remoteContextID(*makeWallpaperID(kIdentifier)), std::nullopt);
}

TEST_F(KitTest, ASetOfContentTypesNamesItsCases) {
    const ReflectedRef types =
        PrivateBridge::find("contentTypes", sent(makeContentTypeSet())->reflect(), 0);
    ASSERT_NE(types, nullptr);
    std::vector<std::string> names;
    for (const ReflectedChild& child : types->children()) {
        EXPECT_EQ(child.label, std::nullopt);
        EXPECT_TRUE(child.value->isEnumeration());
        names.push_back(*PrivateBridge::caseName(child.value));
    }
    EXPECT_THAT(names, ElementsAre("desktop", "screenSaver"));
}

TEST_F(KitTest, ACaseWithAPayloadHasItUnderItsName) {
    const PropertyList choice = Dictionary{
        {"descriptor",
         Dictionary{{"provider", "p"}, {"files", Array{}}, {"configuration", Bytes{1}}}}};
    const ObjectRef result =
        sent(makeKitObject("WallpaperChoiceRequestAdditionResultXPC",
                           Dictionary{{"added", Dictionary{{"choiceID", choice}}}}));
    ASSERT_NE(result, nullptr);
    const ReflectedRef value = result->reflect()->children()[0].value;
    EXPECT_TRUE(value->isEnumeration());
    EXPECT_EQ(PrivateBridge::caseName(value), "added");
    EXPECT_EQ(PrivateBridge::find("configuration", value, 0)->asBytes(), Bytes{1});
    const ReflectedRef refused =
        sent(makeKitObject("WallpaperChoiceRequestAdditionResultXPC", plainCase("refused")))
            ->reflect()
            ->children()[0]
            .value;
    EXPECT_EQ(PrivateBridge::caseName(refused), "refused");
    EXPECT_TRUE(refused->children().empty());
}

TEST_F(KitTest, AReflectedValueIsOfExactlyOneKind) {
    const ReflectedRef request = sent(makeCreationRequest(fullRequest()))->reflect();
    const auto at = [&](const char* key) { return PrivateBridge::find(key, request, 0); };
    EXPECT_EQ(at("directDisplayID")->asDouble(), std::nullopt);
    EXPECT_EQ(at("scaleFactor")->asUInt32(), std::nullopt);
    EXPECT_EQ(at("isPreview")->asUInt32(), std::nullopt);
    EXPECT_EQ(at("configuration")->asFileURL(), std::nullopt);
    EXPECT_EQ(at("cacheDirectory")->asBytes(), std::nullopt);
    EXPECT_EQ(at("size")->asDouble(), std::nullopt);
    EXPECT_FALSE(at("destination")->isEnumeration());
    EXPECT_TRUE(at("presentationMode")->isEnumeration());
}

TEST_F(KitTest, OnlyAFileURLIsOne) {
    CreationRequest request = fullRequest();
    request.cacheDirectory = "https://example.org/";
    EXPECT_EQ(
        PrivateBridge::parseCreation(sent(makeCreationRequest(request))->reflect()).cacheDirectory,
        std::nullopt);
}

TEST_F(KitTest, AViewModelWithAllItsFieldsIsReadAndOneWithoutAFieldIsNot) {
    const PropertyList thumbnail = Dictionary{{"image", Dictionary{{"url", url("file:///t.png")}}}};
    const PropertyList stringID = Dictionary{{"id", "x"}};
    const PropertyList choice =
        Dictionary{{"id", Dictionary{{"descriptor", Dictionary{{"provider", "p"},
                                                               {"files", Array{url("file:///f")}},
                                                               {"configuration", Bytes{}}}}}},
                   {"localizedDescription", "d"},
                   {"thumbnail", thumbnail},
                   {"isDownloaded", true},
                   {"options", Array{}}};
    Dictionary item{{"id", stringID},
                    {"localizedName", "n"},
                    {"thumbnail", thumbnail},
                    {"choice", choice},
                    {"contentBadge", plainCase("dynamic")},
                    {"showInTopLevel", true},
                    {"sortOrder", 0},
                    {"disposability", plainCase("none")}};
    const auto models = [](const Dictionary& withItem) {
        return PropertyList(Dictionary{
            {"desktop",
             Dictionary{{"groups", Array{Dictionary{{"id", Dictionary{{"id", "g"}}},
                                                    {"localizedName", "g"},
                                                    {"disposability", plainCase("removable")},
                                                    {"sortID", Dictionary{{"id", "s"}}},
                                                    {"shouldHideItemLabels", false},
                                                    {"sortOrder", 1},
                                                    {"items", Array{withItem}}}}},
                        {"refreshPolicy", plainCase("default")},
                        {"isModificationDisabled", false}}}});
    };
    const char* kKey = "WallpaperSettingsViewModels";
    const char* kClass = "WallpaperSettingsViewModelsXPC";
    EXPECT_EQ(whyNot(kClass, kKey, models(item)), "it was read");
    EXPECT_EQ(whyNot(kClass, kKey, Dictionary{}), "it was read");
    item.erase("choice");
    EXPECT_THAT(whyNot(kClass, kKey, models(item)),
                HasSubstr("desktop: groups: an element: items: an element: lacks \"choice\""));
}

TEST_F(KitTest, APayloadUnderAnotherKeyIsNotFound) {
    EXPECT_THAT(whyNot("WallpaperRemoteContextXPC", "Int", 1),
                HasSubstr("finds no value for the key \"UInt32\""));
}

TEST_F(KitTest, PayloadsOfAnotherKindAreRefused) {
    const auto remote = [this](const PropertyList& payload) {
        return whyNot("WallpaperRemoteContextXPC", "UInt32", payload);
    };
    EXPECT_EQ(remote(std::int64_t{4294967295}), "it was read");
    EXPECT_THAT(remote(std::int64_t{4294967296}), HasSubstr("no unsigned 32-bit integer"));
    EXPECT_THAT(remote(-1), HasSubstr("no unsigned 32-bit integer"));
    EXPECT_THAT(remote(1.0), HasSubstr("no unsigned 32-bit integer"));
    EXPECT_THAT(whyNot("WallpaperIDXPC", "WallpaperID", Dictionary{{"id", "no uuid"}}),
                HasSubstr("id: is no UUID"));
    EXPECT_THAT(whyNot("WallpaperIDXPC", "WallpaperID", "text"), HasSubstr("is no record"));
    EXPECT_THAT(whyNot("WallpaperContentTypeSetXPC", "WallpaperContentTypeSet",
                       Dictionary{{"contentTypes", Array{plainCase("lockScreen")}}}),
                HasSubstr("is no case of ContentType"));
    EXPECT_THAT(
        whyNot("WallpaperContentTypeSetXPC", "WallpaperContentTypeSet",
               Dictionary{{"contentTypes", Array{Dictionary{{"desktop", Dictionary{}},
                                                            {"screenSaver", Dictionary{}}}}}}),
        HasSubstr("is not one case"));
    EXPECT_THAT(whyNot("WallpaperMigrationVersionXPC", "WallpaperMigrationVersion",
                       Dictionary{{"version", true}}),
                HasSubstr("version: is no integer"));
    EXPECT_EQ(makeKitObject("WallpaperIDXPC", 1), nullptr);
    EXPECT_EQ(makeKitObject("NoSuchClass", 1), nullptr);
}

TEST_F(KitTest, ObjectsDoNotRespondToAnything) {
    const ObjectRef object = makeWallpaperID(kIdentifier);
    EXPECT_FALSE(object->perform("invalidate", nullptr));
    EXPECT_EQ(object->valueForKey("payload"), std::nullopt);
    EXPECT_EQ(object->asString(), std::nullopt);
}

/// The classes as the extension gets them: from a shared object that it is not linked with.
class FrameworkTest : public ::testing::Test {
  protected:
    void SetUp() override {
        void* handle = dlopen(WALLPAPER_KIT_FRAMEWORK, RTLD_LAZY | RTLD_LOCAL);
        ASSERT_NE(handle, nullptr) << dlerror();
        auto* registerClasses = reinterpret_cast<RegisterFrameworkClasses>(
            dlsym(handle, kRegisterFrameworkClassesSymbol));
        ASSERT_NE(registerClasses, nullptr);
        registerClasses(&registry_);
        EXPECT_EQ(dlclose(handle), 0);
    }

    ClassRegistry registry_;
};

TEST_F(FrameworkTest, RegistersAllFifteenClasses) {
    for (const KitClassInfo& info : kitClassInfos()) {
        const ObjectClass* loaded = registry_.classNamed(info.className);
        ASSERT_NE(loaded, nullptr) << info.className;
        EXPECT_NE(loaded, kitClass(info.className));
    }
}

TEST_F(FrameworkTest, ReadsWhatTheAgentWroteAfterItsHandleWasClosed) {
    const auto archive = archiveObject(*makeCreationRequest(fullRequest()));
    const std::array allowed{registry_.classNamed("WallpaperCreationRequestXPC")};
    const auto object = unarchiveObject(archive.value(), allowed, registry_);
    ASSERT_TRUE(object.hasValue()) << object.error().message;
    EXPECT_EQ(&object.value()->objectClass(), allowed[0]);
    EXPECT_EQ(PrivateBridge::parseCreation(object.value()->reflect()).presentationMode, "locked");
    const auto again = archiveObject(*object.value());
    EXPECT_EQ(again.value(), archive.value());
}

TEST_F(FrameworkTest, AFailureToDecodeCrossesAsAValue) {
    const auto archive =
        ArchiveKeyedArchiving().archiveRootObject("WallpaperIDXPC", [](KeyedEncoder& encoder) {
            EXPECT_TRUE(encoder.encodeEncodable(1, "WallpaperID").hasValue());
        });
    const std::array allowed{registry_.classNamed("WallpaperIDXPC")};
    const auto object = unarchiveObject(archive.value(), allowed, registry_);
    ASSERT_FALSE(object.hasValue());
    EXPECT_THAT(object.error().message, HasSubstr("is no record"));
}

} // namespace
} // namespace vantor::agent
