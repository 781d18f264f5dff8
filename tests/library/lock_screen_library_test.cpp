#include "library/lock_screen_library.h"
#include "render/shader_gpu.h"
#include "tests/library/state_file.h"
#include "tests/support/fake_xpc.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <thread>

namespace vantor {
namespace {

using testing::ElementsAre;

struct AbsentAgent : ConnectedAgent {
    std::shared_ptr<AgentProxy> agent() const override { return nullptr; }
};

class LockScreenLibraryTest : public FakePlatformTest {
  protected:
    ShaderGPU shaderGPU{platform.gpu(), platform.images()};
    LockScreenLibrary library{platform, shaderGPU};
};

TEST_F(LockScreenLibraryTest, ItsNamesAndPathsComeFromTheBundle) {
    EXPECT_EQ(library.identifiers().appBundleID, "com.nimbara.app");
    EXPECT_EQ(library.appStateURL(), appStateURL(platform));
    EXPECT_EQ(library.thumbnailDir(), platform.bundle().home / "Library/Caches/Thumbnails");
    EXPECT_TRUE(std::filesystem::is_directory(library.thumbnailDir()));
}

TEST_F(LockScreenLibraryTest, AFolderOfThumbnailsThatCannotBeMadeIsIgnored) {
    platform.bundle().home = platform.bundle().home / "file";
    std::ofstream(platform.bundle().home) << "no folder";
    const LockScreenLibrary other(platform, shaderGPU);
    EXPECT_FALSE(std::filesystem::exists(other.thumbnailDir()));
}

TEST_F(LockScreenLibraryTest, ACatalogEntryResolvesToItsSourceAndTheDefaultLook) {
    const auto resolved = library.resolve("builtin.topo-contours", 1);
    ASSERT_TRUE(resolved);
    EXPECT_EQ(resolved->key, "builtin.topo-contours");
    EXPECT_EQ(resolved->source, ShaderCatalog::topoContours.source);
    EXPECT_EQ(resolved->still, std::nullopt);
    EXPECT_EQ(resolved->uniforms, ShaderUniforms({.x = 0, .y = 0}, 0));
    EXPECT_THAT(log(), ElementsAre()) << "the state file is not needed";
}

TEST_F(LockScreenLibraryTest, AnUnknownEntryResolvesToNothing) {
    EXPECT_FALSE(library.resolve("builtin.unknown", 1));
    EXPECT_FALSE(library.resolve("", 1));
    EXPECT_FALSE(library.resolve("Match-Desktop", 1));
}

TEST_F(LockScreenLibraryTest, AnEntryWithoutASourceResolvesToTheBundlesStill) {
    const ShaderCatalog::Entry entry{.id = "builtin.photo", .title = "Photo", .source = {}};
    EXPECT_EQ(library.resolve(entry).key, "builtin.photo#still");
    EXPECT_EQ(library.resolve(entry).source, std::nullopt);
    EXPECT_EQ(library.resolve(entry).still, std::nullopt);

    const auto still = platform.bundle().resources() / "Stills" / "builtin.photo.jpg";
    std::filesystem::create_directories(still.parent_path());
    std::ofstream(still) << "picture";
    EXPECT_EQ(library.resolve(entry).still, still);
    EXPECT_EQ(library.stillURL("builtin.photo"), still);
    EXPECT_EQ(library.stillURL("builtin.other"), std::nullopt);
}

TEST_F(LockScreenLibraryTest, FollowingAnEmptyDesktopGivesTheCircuitBoard) {
    for (const auto& configuration :
         {std::optional<std::string>("match-desktop"), std::optional<std::string>()}) {
        const auto resolved = library.resolve(configuration, 1);
        ASSERT_TRUE(resolved);
        EXPECT_EQ(resolved->key, "builtin.elec-pcb");
        EXPECT_EQ(resolved->source, ShaderCatalog::elecPCB.source);
    }
}

TEST_F(LockScreenLibraryTest, FollowingTheDesktopGivesItsDisplaysShader) {
    writeState(platform, {{"1", "mine", "a"}, {"2", "other", "b"}}, {"3"});
    for (const auto& configuration :
         {std::optional<std::string>("match-desktop"), std::optional<std::string>()}) {
        const auto resolved = library.resolve(configuration, 2);
        ASSERT_TRUE(resolved);
        EXPECT_EQ(resolved->key, "other#" + DesktopState::stableHash("b"));
        EXPECT_EQ(resolved->source, "b");
    }
    EXPECT_TRUE(library.isNonShader(3));
    EXPECT_FALSE(library.isNonShader(1));
}

TEST_F(LockScreenLibraryTest, TheStateIsReadOnFirstUseAndThenOnlyWhenAsked) {
    EXPECT_THAT(log(), ElementsAre());
    EXPECT_TRUE(library.desktop().displays().empty());
    EXPECT_TRUE(library.desktop().displays().empty());
    EXPECT_EQ(log().size(), 1U) << "one line for the missing file";

    writeState(platform, {{"1", "mine", "a"}});
    EXPECT_TRUE(library.desktop().displays().empty());
    EXPECT_EQ(library.rereadDesktop().displays().size(), 1U);
    EXPECT_EQ(library.desktop().displays().size(), 1U);
}

TEST_F(LockScreenLibraryTest, AHandlerIsHeldWeakly) {
    auto first = std::make_shared<AbsentAgent>();
    const auto second = std::make_shared<AbsentAgent>();
    library.addHandler(first);
    library.addHandler(second);
    EXPECT_THAT(library.handlers(), ElementsAre(first, second));
    const std::weak_ptr<AbsentAgent> weak = first;
    first.reset();
    EXPECT_TRUE(weak.expired());
    EXPECT_THAT(library.handlers(), ElementsAre(second));
}

TEST_F(LockScreenLibraryTest, HandlersComeAndGoOnAnyThread) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
        threads.emplace_back([this] {
            for (int j = 0; j < 200; ++j) {
                const auto handler = std::make_shared<AbsentAgent>();
                library.addHandler(handler);
                EXPECT_FALSE(library.handlers().empty());
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_TRUE(library.handlers().empty());
}

} // namespace
} // namespace vantor
