#include "tools/live_shader.h"

#include "tests/tools/command_line_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor {
namespace {

using testing::HasSubstr;

class LiveShaderTest : public CommandLineTest {
  protected:
    /// What a reload says on both streams.
    Outcome reload() {
        std::ostringstream out;
        std::ostringstream err;
        shader.reload(platform, {.out = out, .err = err});
        return {ExitStatus::done, out.str(), err.str()};
    }
    void save(const std::string& text) { write("live.metal", text); }
    std::optional<std::string> shownSource() {
        const DesktopState now = desktop();
        const auto found = now.displays().find("3");
        return found == now.displays().end() ? std::nullopt : found->second.source;
    }
    std::size_t told() const { return platform.notifications().posted.size(); }

    LiveShader shader{file("live.metal"), 3, {{"speed", PropertyList::Array{0.5}}}};
};

TEST_F(LiveShaderTest, ASaveIsShownWithTheLookAndAnnounced) {
    save(kGoodSource);
    EXPECT_EQ(reload().out, "display 3 shows file.live\n");
    EXPECT_EQ(shownSource(), kGoodSource);
    EXPECT_EQ(desktop().displays().at("3").uniforms.speed, 0.5F);
    EXPECT_EQ(told(), 1U);
    EXPECT_EQ(shader.shown(), "file.live");
}

TEST_F(LiveShaderTest, TheSameTextAgainDoesNothing) {
    save(kGoodSource);
    reload();
    const Outcome again = reload();
    EXPECT_EQ(again.out + again.err, "");
    EXPECT_EQ(told(), 1U);
    EXPECT_EQ(platform.gpu().device->compiledSources.size(), 1U);
}

TEST_F(LiveShaderTest, ABrokenSaveKeepsTheLastGoodShaderAndSaysWhy) {
    save(kGoodSource);
    reload();
    save("#error");
    const Outcome broken = reload();
    EXPECT_EQ(broken.out, "");
    EXPECT_THAT(broken.err, HasSubstr("live.metal:1:2: error: "));
    EXPECT_THAT(broken.err, HasSubstr("display 3 keeps what it shows\n"));
    EXPECT_EQ(shownSource(), kGoodSource);
    EXPECT_EQ(told(), 1U);
    EXPECT_EQ(reload().err, "") << "the same findings once";
}

TEST_F(LiveShaderTest, TheGoodTextAfterABrokenOneIsShownAgain) {
    save(kGoodSource);
    reload();
    save("#error");
    reload();
    save(kGoodSource);
    EXPECT_EQ(reload().out, "display 3 shows file.live\n");
}

TEST_F(LiveShaderTest, AFileThatGoesAwayAndComesBackIsFollowed) {
    save(kGoodSource);
    reload();
    std::filesystem::remove(file("live.metal"));
    EXPECT_THAT(reload().err, HasSubstr("No such file or directory\ndisplay 3 keeps"));
    EXPECT_EQ(shownSource(), kGoodSource);
    save("v_main f_main other");
    EXPECT_EQ(reload().out, "display 3 shows file.live\n");
    EXPECT_EQ(shownSource(), "v_main f_main other");
}

TEST_F(LiveShaderTest, ABrokenFirstTextShowsNothing) {
    save("#error");
    EXPECT_THAT(reload().err, HasSubstr("error: "));
    EXPECT_FALSE(exists(appStateURL(platform)));
    EXPECT_EQ(shader.shown(), std::nullopt);
}

TEST_F(LiveShaderTest, AStateThatCouldNotBeWrittenIsTriedAgainWithTheNextSave) {
    save(kGoodSource);
    create_directories(appStateURL(platform));
    EXPECT_NE(reload().err, "");
    EXPECT_EQ(shader.shown(), std::nullopt);
    std::filesystem::remove(appStateURL(platform));
    EXPECT_EQ(reload().out, "display 3 shows file.live\n");
}

} // namespace
} // namespace vantor
