#include "library/lock_screen_library.h"
#include "render/shader_gpu.h"
#include "tests/library/state_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr const char* kShownSource = "v_main f_main shown";

/// What a picture was drawn with.
ShaderUniforms uniformsOf(const FakeSubmission& submission) {
    const std::vector<std::uint8_t>& bytes = submission.passes.at(0).fragmentBytes.at(0);
    ShaderUniforms uniforms;
    EXPECT_EQ(bytes.size(), sizeof(uniforms));
    std::memcpy(&uniforms, bytes.data(), std::min(bytes.size(), sizeof(uniforms)));
    return uniforms;
}

class ViewModelsTest : public FakePlatformTest {
  protected:
    const SettingsGroup& compose() {
        models_ = library.viewModels();
        return models_.desktop->groups.at(0);
    }
    /// The names of the pictures that were written since the last call, in order.
    std::vector<std::string> written() {
        std::vector<std::string> names;
        for (const auto& picture : platform.images().written) {
            names.push_back(picture.file.filename());
        }
        platform.images().written.clear();
        return names;
    }
    /// What the folder holds that follows the desktop.
    std::vector<std::string> desktopThumbnails() const {
        std::vector<std::string> names;
        for (const auto& entry : std::filesystem::directory_iterator(library.thumbnailDir())) {
            if (entry.path().filename().native().starts_with("match-desktop-")) {
                names.push_back(entry.path().filename());
            }
        }
        return names;
    }
    /// A state whose main display shows `kShownSource` with that first colour.
    void showWithColour(double red) {
        PropertyListDictionary display{
            {"id", "shown"},
            {"source", kShownSource},
            {"look", PropertyListDictionary{{"color1", PropertyList::Array{red, 0.0, 0.0, 1.0}}}}};
        writeStateRoot(platform,
                       PropertyListDictionary{
                           {"desktop", PropertyListDictionary{
                                           {"main", "1"},
                                           {"displays", PropertyListDictionary{{"1", display}}}}}});
        library.rereadDesktop();
    }

    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    LockScreenLibrary library{platform, shaderGPU};

  private:
    SettingsViewModels models_;
};

TEST_F(ViewModelsTest, DesktopAndScreenSaverShowTheSameOneGroup) {
    const SettingsViewModels models = library.viewModels();
    ASSERT_TRUE(models.desktop);
    EXPECT_EQ(models.desktop, models.screenSaver);
    EXPECT_THAT(models.desktop->groups, SizeIs(1));
    EXPECT_EQ(models.desktop->refreshPolicy, SettingsViewModel::RefreshPolicy::default_);
    EXPECT_FALSE(models.desktop->isModificationDisabled);
}

TEST_F(ViewModelsTest, TheGroupIsNamedAfterTheHostApplication) {
    SettingsGroup group = compose();
    EXPECT_THAT(group.items, SizeIs(12));
    group.items.clear();
    EXPECT_EQ(group, (SettingsGroup{.id = {"com.nimbara.shaders"},
                                    .localizedName = "VantorEngine",
                                    .systemImageName = std::nullopt,
                                    .disposability = Disposability::none,
                                    .sortID = {"com.apple.wallpaper.aerials"},
                                    .shouldHideItemLabels = false,
                                    .sortOrder = -100}));
}

TEST_F(ViewModelsTest, ADevelopmentBuildHasAGroupOfItsOwn) {
    platform.bundle().bundleIdentifier = "com.nimbara.app.beta.lockscreen";
    LockScreenLibrary beta(platform, shaderGPU);
    const SettingsViewModels models = beta.viewModels();
    const SettingsGroup& group = models.desktop->groups.at(0);
    EXPECT_EQ(group.id, StringID{"com.nimbara.shaders.dev"});
    EXPECT_EQ(group.localizedName, "VantorEngine Dev");
    EXPECT_EQ(group.items.at(0).choice.id.descriptor.provider, "com.nimbara.app.beta.lockscreen");
}

TEST_F(ViewModelsTest, TheFirstItemFollowsTheDesktop) {
    const SettingsItem item = compose().items.at(0);
    const Thumbnail picture = Thumbnail::image(library.matchThumbnailURL());
    EXPECT_EQ(
        item,
        (SettingsItem{
            .id = {"match-desktop"},
            .localizedName = "Same as Desktop",
            .thumbnail = picture,
            .choice = {.id = {.descriptor = {.provider = "com.nimbara.app.lockscreen",
                                             .files = {},
                                             .configuration = {'m', 'a', 't', 'c', 'h', '-', 'd',
                                                               'e', 's', 'k', 't', 'o', 'p'}}},
                       .localizedDescription = "Follows the shader you pick in VantorEngine",
                       .thumbnail = picture,
                       .isDownloaded = true},
            .contentBadge = SettingsItem::ContentBadge::dynamic,
            .showInTopLevel = true,
            .sortOrder = 0,
            .disposability = Disposability::none,
            .contextMenu = ContextMenu{.items = {{.id = {"open-app"},
                                                  .localizedTitle = "Open VantorEngine…",
                                                  .isDestructive = false}}}}));
}

TEST_F(ViewModelsTest, EveryCatalogEntryIsAnItemInTheCatalogsOrder) {
    const SettingsGroup& group = compose();
    for (std::size_t index = 0; index < ShaderCatalog::all.size(); ++index) {
        const ShaderCatalog::Entry& entry = ShaderCatalog::all[index];
        const std::string id(entry.id);
        const Thumbnail picture = Thumbnail::image(library.thumbnailDir() / (id + ".png"));
        EXPECT_EQ(
            group.items.at(index + 1),
            (SettingsItem{
                .id = {id},
                .localizedName = std::string(entry.title),
                .thumbnail = picture,
                .choice = {.id = {.descriptor = {.provider = "com.nimbara.app.lockscreen",
                                                 .files = {},
                                                 .configuration = Bytes(id.begin(), id.end())}},
                           .localizedDescription = "Live Metal wallpaper by VantorEngine",
                           .thumbnail = picture,
                           .isDownloaded = true},
                .contentBadge = SettingsItem::ContentBadge::dynamic,
                .showInTopLevel = true,
                .sortOrder = static_cast<std::int64_t>(index) + 1,
                .contextMenu = ContextMenu{
                    .items = {{.id = {"open-app"}, .localizedTitle = "Open VantorEngine…"}}}}));
    }
}

TEST_F(ViewModelsTest, EveryPictureIsRenderedOnceInItsSize) {
    compose();
    const auto pictures = platform.images().written;
    EXPECT_THAT(pictures, SizeIs(12));
    for (const auto& picture : pictures) {
        EXPECT_EQ(picture.width, 640U);
        EXPECT_EQ(picture.height, 360U);
        EXPECT_EQ(picture.file.parent_path(), library.thumbnailDir());
    }
    written();
    const SettingsViewModels before = library.viewModels();
    EXPECT_EQ(library.viewModels(), before);
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(ViewModelsTest, PicturesShowTheTwelfthSecondOfTheDefaultLook) {
    compose();
    const auto& submissions = platform.gpu().device->submissions;
    ASSERT_THAT(submissions, SizeIs(12));
    for (const FakeSubmission& submission : submissions) {
        EXPECT_EQ(uniformsOf(submission), ShaderUniforms({.x = 640, .y = 360}, 12));
    }
}

TEST_F(ViewModelsTest, AnExistingFileIsNeverRenderedAgain) {
    const auto file = library.thumbnailDir() / "plasma.png";
    std::ofstream(file) << "an older picture";
    compose();
    std::string content;
    std::getline(std::ifstream(file), content);
    EXPECT_EQ(content, "an older picture");
    EXPECT_THAT(written(), SizeIs(11));
}

TEST_F(ViewModelsTest, APictureThatCannotBeWrittenIsPointedAtAndTriedAgain) {
    platform.images().refusesWriting = true;
    const Thumbnail picture = compose().items.at(11).thumbnail;
    EXPECT_EQ(picture, Thumbnail::image(library.thumbnailDir() / "plasma.png"));
    EXPECT_TRUE(std::filesystem::is_empty(library.thumbnailDir()));
    platform.images().refusesWriting = false;
    EXPECT_EQ(compose().items.at(11).thumbnail, picture);
    EXPECT_THAT(written(), SizeIs(12));
}

TEST_F(ViewModelsTest, ALostFolderIsMadeAgain) {
    std::filesystem::remove_all(library.thumbnailDir());
    compose();
    EXPECT_THAT(written(), SizeIs(12));
}

TEST_F(ViewModelsTest, NothingIsRenderedWhereNothingCanBeKept) {
    std::filesystem::remove_all(library.thumbnailDir());
    std::ofstream(library.thumbnailDir()) << "no folder";
    EXPECT_THAT(compose().items, SizeIs(12));
    EXPECT_THAT(platform.gpu().device->submissions, IsEmpty());
}

TEST_F(ViewModelsTest, WithoutAGPUTheItemsArePointedAtPicturesAllTheSame) {
    platform.gpu().device.reset();
    ShaderGPU none(platform.gpu(), platform.images());
    LockScreenLibrary poor(platform, none);
    EXPECT_THAT(poor.viewModels().desktop->groups.at(0).items, SizeIs(12));
    EXPECT_THAT(written(), IsEmpty());
}

TEST_F(ViewModelsTest, TheDesktopsPictureIsTheFallbacksWhereTheStateIsEmpty) {
    const auto file = library.matchThumbnailURL();
    EXPECT_THAT(file.filename().native(), StartsWith("match-desktop-"));
    EXPECT_EQ(file.extension(), ".png");
    EXPECT_EQ(file.parent_path(), library.thumbnailDir());
    EXPECT_THAT(platform.gpu().device->compiledSources,
                ElementsAre(*ShaderCatalog::elecPCB.source));
}

TEST_F(ViewModelsTest, TheDesktopsPictureShowsItsShaderAndLook) {
    showWithColour(0.25);
    library.matchThumbnailURL();
    const FakeDevice& device = *platform.gpu().device;
    EXPECT_THAT(device.compiledSources, ElementsAre(kShownSource));
    ASSERT_THAT(device.submissions, SizeIs(1));
    ShaderUniforms expected({.x = 640, .y = 360}, 12);
    expected.color1 = {0.25F, 0.0F, 0.0F, 1.0F};
    EXPECT_EQ(uniformsOf(device.submissions.at(0)), expected);
}

TEST_F(ViewModelsTest, AnotherColourIsAnotherFileAndTheOldOneGoes) {
    showWithColour(0.25);
    const auto first = library.matchThumbnailURL();
    EXPECT_EQ(library.matchThumbnailURL(), first) << "the same look is the same file";
    std::ofstream(library.thumbnailDir() / "match-desktop-left-behind.png") << "x";
    std::ofstream(library.thumbnailDir() / "match-desktop.png") << "of somebody else";
    showWithColour(0.5);
    const auto second = library.matchThumbnailURL();
    EXPECT_NE(second, first);
    EXPECT_THAT(desktopThumbnails(), ElementsAre(second.filename()));
    EXPECT_TRUE(std::filesystem::exists(library.thumbnailDir() / "match-desktop.png"));
}

TEST_F(ViewModelsTest, TheOldPictureGoesBeforeTheNewOneIsWritten) {
    showWithColour(0.25);
    library.matchThumbnailURL();
    showWithColour(0.5);
    platform.images().refusesWriting = true;
    library.matchThumbnailURL();
    EXPECT_THAT(desktopThumbnails(), IsEmpty());
    platform.images().refusesWriting = false;
    EXPECT_TRUE(std::filesystem::exists(library.matchThumbnailURL())) << "and is tried again";
}

TEST_F(ViewModelsTest, AreArchivedIntoTheAgentsClass) {
    const FakeObjectClass& known =
        platform.addClass("WallpaperSettingsViewModelsXPC", "WallpaperSettingsViewModels");
    const ObjectRef object = library.archivedViewModels();
    ASSERT_NE(object, nullptr);
    EXPECT_EQ(&object->objectClass(), &known);
    EXPECT_EQ(dynamic_cast<FakeObject&>(*object).payload,
              encodeRecord(library.viewModels()).value());
}

TEST_F(ViewModelsTest, AreNothingWithoutTheAgentsClass) {
    EXPECT_EQ(library.archivedViewModels(), nullptr);
    EXPECT_EQ(logged("bridge: WallpaperSettingsViewModelsXPC missing"), 1U);
}

} // namespace
} // namespace vantor
