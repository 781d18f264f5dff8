#include "agent/control/status_json.h"

#include "tests/agent/control/fake_controller.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vantor::agent {
namespace {

TEST(StatusJson, SaysEverythingUnderItsName) {
    const auto json = nlohmann::json::parse(statusJson(fullStatus()));
    EXPECT_EQ(json, nlohmann::json::parse(R"({
        "version": "1.2", "pid": 4711, "outputKind": "background",
        "locked": true, "paused": false, "onBattery": true, "memory": 52428800,
        "extension": {"pid": 4712, "restarts": 3, "lastEnd": "was ended by signal 9",
                      "memory": 104857600},
        "outputs": [
            {"display": 1, "connector": "DP-1", "make": "Acme", "model": "Wide",
             "width": 3840, "height": 2160, "scale": 1.5, "refreshRate": 59.94,
             "choice": "builtin.smoke",
             "setAside": "\"builtin.smoke\" ended the extension 5 times.",
             "presentationMode": "locked", "activityState": "active",
             "pauses": ["asked", "battery"], "framesPerSecond": 29.5, "frames": 12345,
             "trouble": "no picture since 3 s"},
            {"display": 2, "connector": "HDMI-A-1", "make": "", "model": "",
             "width": 1920, "height": 1080, "scale": 1.0, "refreshRate": 60.0,
             "choice": "match-desktop", "setAside": null,
             "presentationMode": "default", "activityState": "suspended",
             "pauses": [], "framesPerSecond": 0.0, "frames": 0, "trouble": ""}],
        "configurationError": "agent.toml:1:11: max_fps is 0, but must be above 0"})"));
}

TEST(StatusJson, IsReadAsItWasWritten) {
    EXPECT_EQ(readStatusJson(statusJson(fullStatus())), fullStatus());
    EXPECT_EQ(readStatusJson(statusJson({})), AgentStatus{});
}

TEST(StatusJson, AnExtensionThatDoesNotRunHasNoProcess) {
    EXPECT_TRUE(nlohmann::json::parse(statusJson({}))["extension"]["pid"].is_null());
}

TEST(StatusJson, OfAnotherVersionIsReadAsFarAsItIsUnderstood) {
    const auto read = readStatusJson(R"({"version": 2, "pid": 7, "later": 1, "extension": [],
        "outputs": [1, {"display": -1, "connector": "DP-1", "pauses": [1, "asked"]}]})");
    ASSERT_TRUE(read);
    AgentStatus expected{};
    expected.pid = 7;
    expected.outputs.emplace_back();
    expected.outputs[0].connector = "DP-1";
    expected.outputs[0].pauses = {"", "asked"};
    EXPECT_EQ(*read, expected);
}

TEST(StatusJson, OtherTextIsNone) {
    EXPECT_EQ(readStatusJson(""), std::nullopt);
    EXPECT_EQ(readStatusJson("[]"), std::nullopt);
    EXPECT_EQ(readStatusJson("{"), std::nullopt);
}

TEST(StatusJson, NamesThatAreNoTextDoNoHarm) {
    AgentStatus status;
    status.outputKind = "\xff";
    EXPECT_EQ(readStatusJson(statusJson(status))->outputKind, "\xEF\xBF\xBD");
}

} // namespace
} // namespace vantor::agent
