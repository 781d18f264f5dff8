#include "bridge/settings_view_models.h"

#include "tests/support/picker_records.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <map>
#include <type_traits>

namespace vantor {
namespace {

using ::testing::ElementsAre;
using Array = PropertyList::Array;
using Dictionary = PropertyListDictionary;

template <typename Record>
PropertyList encoded(const Record& record) {
    auto graph = encodeRecord(record);
    EXPECT_TRUE(graph.hasValue()) << graph.error().message;
    return graph ? graph.value() : PropertyList("not encoded");
}

/// The keys in the order in which they were written.
template <typename Record>
std::vector<std::string> keys(const Record& record) {
    std::vector<std::string> names;
    const PropertyList graph = encoded(record);
    for (const auto& [key, value] : *graph.dictionary()) {
        names.push_back(key);
    }
    return names;
}

/// What stands under the last of these keys, each in the value before it.
PropertyList at(const PropertyList& graph, std::initializer_list<std::string_view> path) {
    const PropertyList* value = &graph;
    for (const std::string_view key : path) {
        const Dictionary* dictionary = value->dictionary();
        value = dictionary != nullptr ? dictionary->find(key) : nullptr;
        if (value == nullptr) {
            return "no key " + std::string(key);
        }
    }
    return *value;
}

PropertyList plainCase(const char* name) { return Dictionary{{name, Dictionary{}}}; }

TEST(SettingsViewModels, WithoutModelsEncodeAsAnEmptyContainer) {
    EXPECT_EQ(encoded(SettingsViewModels{}), PropertyList(Dictionary{}));
}

TEST(SettingsViewModels, EncodeOnlyTheModelThatIsThere) {
    EXPECT_THAT(keys(SettingsViewModels{.screenSaver = SettingsViewModel{}}),
                ElementsAre("screenSaver"));
    EXPECT_THAT(keys(fullPicker()), ElementsAre("desktop", "screenSaver"));
}

TEST(SettingsViewModel, EncodesItsFieldsInOrder) {
    EXPECT_THAT(keys(SettingsViewModel{}),
                ElementsAre("groups", "refreshPolicy", "isModificationDisabled"));
    EXPECT_EQ(
        encoded(SettingsViewModel{.groups = {},
                                  .refreshPolicy = SettingsViewModel::RefreshPolicy::discretionary,
                                  .isModificationDisabled = true}),
        PropertyList(Dictionary{{"groups", Array{}},
                                {"refreshPolicy", plainCase("discretionary")},
                                {"isModificationDisabled", true}}));
    EXPECT_EQ(at(encoded(SettingsViewModel{}), {"refreshPolicy"}), plainCase("default"));
}

TEST(SettingsGroup, WithoutItemsStillCarriesTheEmptyList) {
    const SettingsGroup group{.id = {"g"}, .localizedName = "Group", .sortID = {"s"}};
    EXPECT_THAT(keys(group), ElementsAre("id", "localizedName", "disposability", "sortID",
                                         "shouldHideItemLabels", "sortOrder", "items"));
    EXPECT_EQ(at(encoded(group), {"items"}), PropertyList(Array{}));
    EXPECT_EQ(at(encoded(group), {"id", "id"}), PropertyList("g"));
}

TEST(SettingsGroup, EncodesItsFieldsInOrder) {
    EXPECT_THAT(keys(fullGroup()),
                ElementsAre("id", "localizedName", "systemImageName", "disposability", "sortID",
                            "shouldHideItemLabels", "sortOrder", "items"));
}

TEST(SettingsItem, LeavesOutTheKeysOfAbsentFieldsOnly) {
    EXPECT_THAT(keys(plainItem()),
                ElementsAre("id", "localizedName", "thumbnail", "choice", "contentBadge",
                            "showInTopLevel", "sortOrder", "disposability"));
    EXPECT_THAT(keys(fullItem()), ElementsAre("id", "groupID", "subgroupID", "localizedName",
                                              "localizedInformativeText", "thumbnail", "choice",
                                              "contentBadge", "showInTopLevel", "sortOrder",
                                              "disposability", "toolTip", "contextMenu"));
}

TEST(SettingsItem, NoBadgeAndNoDisposabilityAreCasesOfTheirOwn) {
    const PropertyList graph = encoded(plainItem());
    EXPECT_EQ(at(graph, {"contentBadge"}), plainCase("none"));
    EXPECT_EQ(at(graph, {"disposability"}), plainCase("none"));
}

TEST(SettingsItem, EncodesEveryCaseByItsName) {
    using Badge = SettingsItem::ContentBadge;
    SettingsItem item = plainItem();
    for (const auto& [badge, name] :
         {std::pair{Badge::none, "none"}, {Badge::dynamic, "dynamic"}, {Badge::video, "video"}}) {
        item.contentBadge = badge;
        EXPECT_EQ(at(encoded(item), {"contentBadge"}), plainCase(name));
    }
    for (const auto& [disposability, name] : {std::pair{Disposability::none, "none"},
                                              {Disposability::removable, "removable"},
                                              {Disposability::purgeable, "purgeable"}}) {
        item.disposability = disposability;
        EXPECT_EQ(at(encoded(item), {"disposability"}), plainCase(name));
    }
}

TEST(SettingsItem, KeepsIntegersToTheEndsOfTheirRange) {
    SettingsItem item = plainItem();
    for (const std::int64_t order : {std::numeric_limits<std::int64_t>::min(), std::int64_t{-1},
                                     std::numeric_limits<std::int64_t>::max()}) {
        item.sortOrder = order;
        EXPECT_EQ(at(encoded(item), {"sortOrder"}), PropertyList(order));
    }
}

TEST(Thumbnail, IsTheCaseWithTheFilesURL) {
    EXPECT_EQ(
        at(encoded(plainItem()), {"thumbnail"}),
        PropertyList(Dictionary{
            {"image", Dictionary{{"url", Dictionary{{"relative", "file:///tmp/a%20b.png"}}}}}}));
}

TEST(Choice, CarriesNoOptionsAsTheEmptyList) {
    static_assert(!std::is_default_constructible_v<Choice::Option>);
    EXPECT_THAT(keys(plainItem().choice),
                ElementsAre("id", "localizedDescription", "thumbnail", "isDownloaded", "options"));
    EXPECT_EQ(at(encoded(plainItem().choice), {"options"}), PropertyList(Array{}));
}

TEST(ChoiceDescriptor, CarriesItsFilesAndItsBytes) {
    EXPECT_EQ(encoded(fullItem().choice.id),
              PropertyList(Dictionary{
                  {"descriptor",
                   Dictionary{{"provider", "com.nimbara.app.lockscreen"},
                              {"files", Array{Dictionary{{"relative", "file:///f/%C3%A4"}}}},
                              {"configuration", Bytes{0, 255, 10}}}}}));
}

TEST(ContextMenu, CarriesItsItemsInOrder) {
    EXPECT_EQ(
        encoded(*fullItem().contextMenu),
        PropertyList(Dictionary{{"items", Array{Dictionary{{"id", Dictionary{{"id", "open-app"}}},
                                                           {"localizedTitle", "Open VantorEngine…"},
                                                           {"isDestructive", false}},
                                                Dictionary{{"id", Dictionary{{"id", "remove"}}},
                                                           {"localizedTitle", "Remove"},
                                                           {"isDestructive", true}}}}}));
}

TEST(SettingsViewModels, CannotBeEncodedWithAURLThatNamesNoFile) {
    SettingsViewModels models = fullPicker();
    models.screenSaver->groups.front().items.front().thumbnail = Thumbnail::image("later.png");
    models.screenSaver->groups.front().items.back().thumbnail = Thumbnail::image("first.png");
    const auto graph = encodeRecord(models);
    ASSERT_FALSE(graph.hasValue());
    EXPECT_EQ(graph.error().message, "the path \"later.png\" names no file by itself");
}

TEST(SettingsViewModels, AreValuesOfTheirOwn) {
    const SettingsViewModels models = fullPicker();
    SettingsViewModels copy = models;
    copy.desktop->groups.front().items.front().localizedName = "Another";
    EXPECT_EQ(models, fullPicker());
    EXPECT_NE(copy, models);
}

/// Changes of one field each, every one of which makes another record.
const std::map<std::string, std::function<void(SettingsItem&)>> kItemChanges{
    {"id", [](SettingsItem& item) { item.id.id += "x"; }},
    {"groupID", [](SettingsItem& item) { item.groupID.reset(); }},
    {"subgroupID", [](SettingsItem& item) { item.subgroupID->id = ""; }},
    {"localizedName", [](SettingsItem& item) { item.localizedName = ""; }},
    {"localizedInformativeText", [](SettingsItem& item) { item.localizedInformativeText.reset(); }},
    {"thumbnail", [](SettingsItem& item) { item.thumbnail = Thumbnail::image("/other.png"); }},
    {"choice.id.descriptor.provider",
     [](SettingsItem& item) { item.choice.id.descriptor.provider = ""; }},
    {"choice.id.descriptor.files",
     [](SettingsItem& item) { item.choice.id.descriptor.files.clear(); }},
    {"choice.id.descriptor.configuration",
     [](SettingsItem& item) { item.choice.id.descriptor.configuration.pop_back(); }},
    {"choice.localizedDescription",
     [](SettingsItem& item) { item.choice.localizedDescription += "."; }},
    {"choice.thumbnail",
     [](SettingsItem& item) { item.choice.thumbnail = Thumbnail::image("/other.png"); }},
    {"choice.isDownloaded", [](SettingsItem& item) { item.choice.isDownloaded = false; }},
    {"contentBadge",
     [](SettingsItem& item) { item.contentBadge = SettingsItem::ContentBadge::dynamic; }},
    {"showInTopLevel", [](SettingsItem& item) { item.showInTopLevel = false; }},
    {"sortOrder", [](SettingsItem& item) { --item.sortOrder; }},
    {"disposability", [](SettingsItem& item) { item.disposability = Disposability::none; }},
    {"toolTip", [](SettingsItem& item) { item.toolTip.reset(); }},
    {"contextMenu", [](SettingsItem& item) { item.contextMenu.reset(); }},
    {"contextMenu.items", [](SettingsItem& item) { item.contextMenu->items.pop_back(); }},
    {"contextMenu.items.id",
     [](SettingsItem& item) { item.contextMenu->items.front().id.id = "o"; }},
    {"contextMenu.items.localizedTitle",
     [](SettingsItem& item) { item.contextMenu->items.front().localizedTitle = "o"; }},
    {"contextMenu.items.isDestructive",
     [](SettingsItem& item) { item.contextMenu->items.front().isDestructive = true; }},
};

TEST(SettingsItem, EqualsAndHashesByEveryField) {
    const SettingsItem item = fullItem();
    EXPECT_EQ(item, fullItem());
    EXPECT_EQ(std::hash<SettingsItem>{}(item), std::hash<SettingsItem>{}(fullItem()));
    for (const auto& [field, change] : kItemChanges) {
        SettingsItem changed = fullItem();
        change(changed);
        EXPECT_NE(changed, item) << field;
        EXPECT_NE(std::hash<SettingsItem>{}(changed), std::hash<SettingsItem>{}(item)) << field;
    }
}

TEST(SettingsGroup, EqualsAndHashesByEveryField) {
    const std::map<std::string, std::function<void(SettingsGroup&)>> changes{
        {"id", [](SettingsGroup& group) { group.id.id = ""; }},
        {"localizedName", [](SettingsGroup& group) { group.localizedName = ""; }},
        {"systemImageName", [](SettingsGroup& group) { group.systemImageName.reset(); }},
        {"disposability", [](SettingsGroup& group) { group.disposability = Disposability::none; }},
        {"sortID", [](SettingsGroup& group) { group.sortID.id = ""; }},
        {"shouldHideItemLabels", [](SettingsGroup& group) { group.shouldHideItemLabels = false; }},
        {"sortOrder", [](SettingsGroup& group) { group.sortOrder = 0; }},
        {"items", [](SettingsGroup& group) { group.items.pop_back(); }},
    };
    for (const auto& [field, change] : changes) {
        SettingsGroup changed = fullGroup();
        change(changed);
        EXPECT_NE(changed, fullGroup()) << field;
        EXPECT_NE(std::hash<SettingsGroup>{}(changed), std::hash<SettingsGroup>{}(fullGroup()))
            << field;
    }
}

TEST(SettingsViewModels, EqualAndHashByEveryField) {
    const std::map<std::string, std::function<void(SettingsViewModels&)>> changes{
        {"desktop", [](SettingsViewModels& models) { models.desktop.reset(); }},
        {"screenSaver", [](SettingsViewModels& models) { models.screenSaver.reset(); }},
        {"groups", [](SettingsViewModels& models) { models.desktop->groups.clear(); }},
        {"refreshPolicy",
         [](SettingsViewModels& models) {
             models.desktop->refreshPolicy = SettingsViewModel::RefreshPolicy::default_;
         }},
        {"isModificationDisabled",
         [](SettingsViewModels& models) { models.desktop->isModificationDisabled = false; }},
    };
    const std::hash<SettingsViewModels> hash;
    for (const auto& [field, change] : changes) {
        SettingsViewModels changed = fullPicker();
        change(changed);
        EXPECT_NE(changed, fullPicker()) << field;
        EXPECT_NE(hash(changed), hash(fullPicker())) << field;
    }
}

} // namespace
} // namespace vantor
