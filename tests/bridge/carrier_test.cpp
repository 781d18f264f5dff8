#include "bridge/carrier.h"

#include "bridge/settings_view_models.h"
#include "tests/support/fake_platform.h"
#include "tests/support/picker_records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor::PrivateBridge {
namespace {

using ::testing::ElementsAre;
using ::testing::StartsWith;

using MakeApple = FakePlatformTest;

/// The tests' own class keeps the payload that it was decoded from.
PropertyList payloadOf(const ObjectRef& object) {
    const auto* fake = dynamic_cast<const FakeObject*>(object.get());
    return fake != nullptr && fake->payload ? *fake->payload : PropertyList("no payload");
}

TEST_F(MakeApple, TheAgentsClassReadsThePayloadUnderTheKey) {
    auto& agentClass = platform.addClass("WallpaperRemoteContextXPC", "UInt32");
    const ObjectRef object =
        makeApple(platform, "WallpaperRemoteContextXPC", "UInt32", std::uint32_t{4294967295});
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(&object->objectClass(), &agentClass);
    EXPECT_EQ(payloadOf(object), PropertyList(std::int64_t{4294967295}));
    EXPECT_TRUE(log().empty());
}

TEST_F(MakeApple, CarriesWholeRecords) {
    platform.addClass("WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels");
    const PropertyList record = PropertyListDictionary{
        {"desktop", PropertyListDictionary{{"groups", PropertyList::Array{}},
                                           {"isModificationDisabled", false}}}};
    EXPECT_EQ(payloadOf(makeApple(platform, "WallpaperSettingsViewModelsXPC",
                                  "WallpaperSettingsViewModels", record)),
              record);
}

TEST_F(MakeApple, AClassThatIsMissingGivesNothingAndIsLogged) {
    EXPECT_EQ(makeApple(platform, "WallpaperRemoteContextXPC", "UInt32", 1), nullptr);
    EXPECT_THAT(log(), ElementsAre("bridge: WallpaperRemoteContextXPC missing"));
}

TEST_F(MakeApple, APayloadThatCannotBeEncodedStillGivesAnArchiveWithoutIt) {
    platform.addClass("WallpaperRemoteContextXPC", "UInt32");
    EXPECT_EQ(makeApple(platform, "WallpaperRemoteContextXPC", "UInt32", PropertyList::UID{1}),
              nullptr);
    EXPECT_THAT(log(),
                ElementsAre(StartsWith("carrier encode failed: a value that cannot be archived"),
                            "bridge: WallpaperRemoteContextXPC decode error: no value for the key "
                            "\"UInt32\""));
}

TEST_F(MakeApple, ARecordIsCarriedAsItsGraph) {
    platform.addClass("WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels");
    const SettingsViewModels models = fullPicker();
    EXPECT_EQ(payloadOf(makeApple(platform, "WallpaperSettingsViewModelsXPC",
                                  SettingsViewModels::kPayloadName, models)),
              encodeRecord(models).value());
}

TEST_F(MakeApple, ARecordThatCannotBeEncodedIsLeftOutOfTheArchive) {
    platform.addClass("WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels");
    SettingsViewModels models = fullPicker();
    models.desktop->groups.front().items.front().thumbnail = Thumbnail::image("relative.png");
    EXPECT_EQ(makeApple(platform, "WallpaperSettingsViewModelsXPC",
                        SettingsViewModels::kPayloadName, models),
              nullptr);
    EXPECT_THAT(log(),
                ElementsAre("carrier encode failed: the path \"relative.png\" names no file by "
                            "itself",
                            "bridge: WallpaperSettingsViewModelsXPC decode error: no value for the "
                            "key \"WallpaperSettingsViewModels\""));
}

TEST_F(MakeApple, AClassThatReadsAnotherKeyGivesADecodeError) {
    platform.addClass("WallpaperRemoteContextXPC", "Int");
    EXPECT_EQ(makeApple(platform, "WallpaperRemoteContextXPC", "UInt32", 1), nullptr);
    EXPECT_EQ(logged("bridge: WallpaperRemoteContextXPC decode error: no value for the key "
                     "\"Int\""),
              1U);
}

/// A class that complains and decodes all the same.
class GrumblingClass : public FakeObjectClass {
  public:
    using FakeObjectClass::FakeObjectClass;
    ObjectRef decodeInstance(KeyedDecoder& decoder) const override {
        decoder.failWithError({.domain = "Test", .code = 1, .message = "not quite"});
        decoder.failWithError({.domain = "Test", .code = 2, .message = "later"});
        return std::make_shared<FakeObject>(*this);
    }
};

TEST_F(MakeApple, AnObjectThatDecodedWithAnErrorIsStillReturned) {
    const GrumblingClass grumbling("WallpaperIDXPC");
    platform.objectRuntime().registerClass(grumbling);
    EXPECT_NE(makeApple(platform, "WallpaperIDXPC", "WallpaperID", 1), nullptr);
    EXPECT_THAT(log(), ElementsAre("bridge: WallpaperIDXPC decode error: not quite"));
    platform.reset();
}

/// Archiving as the tests want it to fail.
class FailingArchiving : public KeyedArchiving {
  public:
    Result<Bytes> archiveRootObject(std::string_view,
                                    const std::function<void(KeyedEncoder&)>&) override {
        if (failsToArchive) {
            return Failure{Error{.domain = "Test", .code = 1, .message = "disk of clay"}};
        }
        return Bytes{1};
    }
    Result<std::unique_ptr<KeyedUnarchiver>> unarchiver(std::span<const std::uint8_t>) override {
        return Failure{Error{.domain = "Test", .code = 2, .message = "unreadable"}};
    }

    bool failsToArchive = true;
};

class FailingPlatform : public Platform {
  public:
    explicit FailingPlatform(FakePlatform& base) : base_(base) {}

    AppExtensionRuntime& appExtensionRuntime() override { return base_.appExtensionRuntime(); }
    Bundle& bundle() override { return base_.bundle(); }
    CodeIdentity& codeIdentity() override { return base_.codeIdentity(); }
    gpu::System& gpu() override { return base_.gpu(); }
    Images& images() override { return base_.images(); }
    FailingArchiving& keyedArchiving() override { return archiving_; }
    Layers& layers() override { return base_.layers(); }
    Loader& loader() override { return base_.loader(); }
    MainQueue& mainQueue() override { return base_.mainQueue(); }
    MediaClock& mediaClock() override { return base_.mediaClock(); }
    Notifications& notifications() override { return base_.notifications(); }
    ObjectRuntime& objectRuntime() override { return base_.objectRuntime(); }
    PropertyListSerialization& propertyLists() override { return base_.propertyLists(); }
    Screens& screens() override { return base_.screens(); }
    UnifiedLog& unifiedLog() override { return base_.unifiedLog(); }
    Workspace& workspace() override { return base_.workspace(); }

  private:
    FakePlatform& base_;
    FailingArchiving archiving_;
};

TEST_F(MakeApple, AnArchiveThatCannotBeWrittenOrOpenedIsLoggedAlike) {
    platform.addClass("WallpaperIDXPC", "WallpaperID");
    FailingPlatform failing(platform);
    EXPECT_EQ(makeApple(failing, "WallpaperIDXPC", "WallpaperID", 1), nullptr);
    failing.keyedArchiving().failsToArchive = false;
    EXPECT_EQ(makeApple(failing, "WallpaperIDXPC", "WallpaperID", 1), nullptr);
    EXPECT_THAT(log(), ElementsAre("bridge: WallpaperIDXPC archive failed: disk of clay",
                                   "bridge: WallpaperIDXPC archive failed: unreadable"));
}

TEST(Carrier, EncodesItsBody) {
    FakePlatform& platform = FakePlatform::shared();
    const Carrier carrier([](KeyedEncoder& encoder) { return encoder.encodeEncodable("b", "a"); });
    const auto archive = platform.keyedArchiving().archiveRootObject(
        Carrier::kClassName, [&](KeyedEncoder& encoder) { carrier.encode(encoder); });
    ASSERT_TRUE(archive.hasValue());
    const auto list = platform.propertyLists().read(archive.value());
    ASSERT_TRUE(list.hasValue());
    const PropertyList::Array& objects = *list.value().dictionary()->find("$objects")->array();
    const bool named = std::any_of(objects.begin(), objects.end(), [](const PropertyList& object) {
        return object.string() != nullptr && *object.string() == "b";
    });
    EXPECT_TRUE(named);
    EXPECT_EQ(Carrier::kClassName, "VantorXPCCarrier");
}

} // namespace
} // namespace vantor::PrivateBridge
