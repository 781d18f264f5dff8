#include "agent/control/picker_json.h"

#include "tests/agent/control/fake_controller.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace vantor::agent {
namespace {

TEST(PickerJson, SaysEverythingUnderItsName) {
    const auto json = nlohmann::json::parse(pickerJson(fullPicker()));
    EXPECT_EQ(json["desktop"], nlohmann::json::parse(R"([
        {"id": "engine", "name": "Engine", "sortOrder": -1, "items": [
            {"id": "plasma", "name": "Plasma \"€\"", "description": "It glows.",
             "thumbnail": "file:///pictures/a%20b.png", "thumbnailPath": "/pictures/a b.png",
             "configuration": "{}", "provider": "com.example", "badge": "dynamic",
             "showInTopLevel": true, "sortOrder": 4, "menu": ["Open", "Forget"]}]}])"));
    EXPECT_EQ(json["screenSaver"].size(), 2U);
}

TEST(PickerJson, IsReadAsItWasWritten) {
    EXPECT_EQ(readPickerJson(pickerJson(fullPicker())), fullPicker());
    EXPECT_EQ(readPickerJson(pickerJson({})), Picker{});
}

TEST(PickerJson, OfAnotherVersionIsReadAsFarAsItIsUnderstood) {
    const auto read =
        readPickerJson(R"({"desktop": [1, {"id": 1, "items": [{"menu": [1]}, 2]}], "more": 0})");
    ASSERT_TRUE(read);
    ASSERT_EQ(read->desktop.size(), 1U);
    EXPECT_EQ(read->desktop[0].items, std::vector{PickerItem{}});
    EXPECT_EQ(readPickerJson("[]"), std::nullopt);
    EXPECT_EQ(readPickerJson("{"), std::nullopt);
}

TEST(PathOfFileURL, IsDecoded) {
    EXPECT_EQ(pathOfFileURL("file:///a/b.png"), "/a/b.png");
    EXPECT_EQ(pathOfFileURL("file:///%C3%a4%20"), "/\xc3\xa4 ");
    EXPECT_EQ(pathOfFileURL("file://localhost/a"), "/a");
    EXPECT_EQ(pathOfFileURL("file:///100%"), "/100%");
    EXPECT_EQ(pathOfFileURL("file:///100%2"), "/100%2");
    EXPECT_EQ(pathOfFileURL("file:///100%zz"), "/100%zz");
    EXPECT_EQ(pathOfFileURL("file://"), "");
    EXPECT_EQ(pathOfFileURL("https://a/b"), "");
    EXPECT_EQ(pathOfFileURL(""), "");
}

} // namespace
} // namespace vantor::agent
