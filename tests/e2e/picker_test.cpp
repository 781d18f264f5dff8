// The host application changes what it shows while the agent runs, and what the picker offers.

#include "tests/e2e/installation.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace vantor::e2e {
namespace {

using std::chrono::seconds;
using testing::HasSubstr;

/// With a session bus that nobody else is on.
class PickerTest : public Installation {
  protected:
    std::map<std::string, std::string> environment() const override {
        auto changed = Installation::environment();
        changed["DBUS_SESSION_BUS_ADDRESS"] = address();
        return changed;
    }

    void SetUp() override {
        Installation::SetUp();
        bus_.emplace(std::vector<std::string>{"/usr/bin/dbus-daemon", "--session", "--nofork",
                                              "--nopidfile", "--address=" + address()},
                     std::map<std::string, std::string>());
        ASSERT_TRUE(eventually([&] { return std::filesystem::exists(socket()); }, seconds(10)));
    }

    nlohmann::json picker() const {
        const Outcome outcome = command("vantor-agent", {"picker", "--json"});
        EXPECT_EQ(outcome.status, 0) << outcome.errors;
        return nlohmann::json::parse(outcome.output);
    }

    static std::filesystem::path fileOf(const nlohmann::json& item) {
        const std::string url = item.at("thumbnail");
        constexpr std::string_view kScheme = "file://";
        EXPECT_TRUE(url.starts_with(kScheme)) << url;
        return url.substr(kScheme.size());
    }

  private:
    std::filesystem::path socket() const { return folder() / "bus"; }
    std::string address() const { return "unix:path=" + socket().string(); }

    std::optional<Process> bus_;
};

TEST_F(PickerTest, OffersTheDesktopsShaderAndTheCatalogWithPicturesThatAreThere) {
    const nlohmann::json offered = picker();
    EXPECT_EQ(offered.at("desktop"), offered.at("screenSaver"));
    ASSERT_EQ(offered.at("desktop").size(), 1U);
    const nlohmann::json& group = offered.at("desktop").at(0);
    EXPECT_EQ(group.at("name"), "VantorEngine");
    ASSERT_EQ(group.at("items").size(), 12U);
    EXPECT_EQ(group.at("items").at(0).at("name"), "Same as Desktop");
    EXPECT_EQ(group.at("items").at(11).at("id"), "plasma");
    for (const nlohmann::json& item : group.at("items")) {
        const Picture picture = Picture::read(fileOf(item));
        EXPECT_EQ(picture.width(), 640U) << item;
        EXPECT_EQ(picture.height(), 360U) << item;
        EXPECT_GT(picture.brightest(), 32) << item;
    }
    EXPECT_THAT(log(), HasSubstr("PROVIDE VIEW MODELS → 11 tiles\n"));
}

TEST_F(PickerTest, KeepsItsPicturesAndFollowsTheDesktopsLook) {
    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma", "--tint", "1,0,0,1"}).status, 0);
    const nlohmann::json before = picker().at("desktop").at(0).at("items");
    const auto made = std::filesystem::last_write_time(fileOf(before.at(11)));
    const Picture red = Picture::read(fileOf(before.at(0)));
    EXPECT_EQ(red.at(320, 180).green, 0);

    ASSERT_EQ(vantorctl({"set", "--display", "1", "plasma", "--tint", "0,1,0,1"}).status, 0);
    const nlohmann::json after = picker().at("desktop").at(0).at("items");
    EXPECT_EQ(std::filesystem::last_write_time(fileOf(after.at(11))), made);
    const Picture green = Picture::read(fileOf(after.at(0)));
    EXPECT_EQ(green.at(320, 180).red, 0);
    EXPECT_FALSE(std::filesystem::exists(fileOf(before.at(0)))) << "only one is kept";
}

TEST_F(PickerTest, APictureThatCannotBeKeptIsOfferedAllTheSame) {
    std::filesystem::create_directories(thumbnails().parent_path());
    std::ofstream(thumbnails()) << "no folder";
    const nlohmann::json items = picker().at("desktop").at(0).at("items");
    EXPECT_EQ(items.size(), 12U);
    std::filesystem::remove(thumbnails());
    EXPECT_EQ(Picture::read(fileOf(picker().at("desktop").at(0).at("items").at(3))).width(), 640U);
}

TEST_F(PickerTest, WithoutTheAgentsFrameworkSaysWhyThereIsNothing) {
    const std::filesystem::path root = home() / "system";
    std::filesystem::create_directories(root);
    auto changed = environment();
    changed["VANTOR_SYSTEM_ROOT"] = root.string();
    const Outcome outcome = run({VANTOR_BIN "/vantor-agent", "picker", "--extension",
                                 VANTOR_BIN "/../lib/vantor/VantorLockScreen.appex"},
                                changed);
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(
        outcome.errors,
        HasSubstr(
            "vantor-agent: argument 0: the class \"WallpaperContentTypeSetXPC\" is not known\n"));
}

TEST_F(PickerTest, ARunningWallpaperFollowsTheHostApplication) {
    const auto red = write("red.metal", flatShader("float3(1.0, 0.0, 0.0)"));
    const auto green = write("green.metal", flatShader("float3(0.0, 1.0, 0.0)"));
    ASSERT_EQ(vantorctl({"set", "--display", "1", red.string()}).status, 0);
    // The pictures that a change would wait for are there.
    picker();
    Process agent({VANTOR_BIN "/vantor-agent", "run", "--output", "headless:160x90", "--seconds",
                   "12", "--out", out().string()},
                  environment());
    ASSERT_TRUE(
        eventually([&] { return log().find(" ACQUIRE ") != std::string::npos; }, seconds(10)));
    ASSERT_EQ(vantorctl({"set", "--display", "1", green.string()}).status, 0);
    ASSERT_TRUE(eventually(
        [&] {
            return log().find("app state re-read, desktop displays [\"1\"]") != std::string::npos;
        },
        seconds(10)))
        << log();
    const Outcome outcome = agent.wait(seconds(60));
    ASSERT_EQ(outcome.status, 0) << outcome.errors;
    const Pixel pixel = Picture::read(out() / "display-1-b.png").at(80, 45);
    EXPECT_EQ(pixel.red, 0);
    EXPECT_EQ(pixel.green, 255);
    EXPECT_THAT(log(), testing::Not(HasSubstr("updateSettingsViewModels: ")));
}

} // namespace
} // namespace vantor::e2e
