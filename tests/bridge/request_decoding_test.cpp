#include "bridge/request_decoding.h"

#include "tests/support/fake_objects.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vantor::PrivateBridge {
namespace {

const auto kIdentifier = *UUID::parse("0F0E0D0C-0B0A-0908-0706-050403020100");

ReflectedRef leaf(FakeReflected::View view) { return FakeReflected::leaf(std::move(view)); }

ReflectedRef tree(std::vector<std::pair<std::string, ReflectedRef>> children) {
    return FakeReflected::tree(std::move(children));
}

Bytes bytesOf(std::string_view text) { return {text.begin(), text.end()}; }

/// `value` inside `levels` values, each the only child of the one around it.
ReflectedRef nested(ReflectedRef value, int levels) {
    for (int level = 0; level < levels; ++level) {
        value = tree({{"x", value}});
    }
    return value;
}

/// A case with a payload, labelled or not.
class PayloadCase : public FakeReflected {
  public:
    explicit PayloadCase(std::optional<std::string> label) : label_(std::move(label)) {}
    std::vector<ReflectedChild> children() const override {
        return {{.label = label_, .value = leaf(1.0)}};
    }
    bool isEnumeration() const override { return true; }
    std::string description() const override { return "described"; }

  private:
    std::optional<std::string> label_;
};

/// A value whose children are itself, many times over.
class Cycle : public FakeReflected, public std::enable_shared_from_this<Cycle> {
  public:
    explicit Cycle(std::size_t width) : width_(width) {}
    std::vector<ReflectedChild> children() const override {
        return std::vector<ReflectedChild>(width_, {.label = "x", .value = shared_from_this()});
    }

  private:
    std::size_t width_;
};

ReflectedRef creationWith(std::string label, ReflectedRef value) {
    return tree({{"request", tree({{std::move(label), std::move(value)}})}});
}

ReflectedRef creationWithDestination(std::vector<std::pair<std::string, ReflectedRef>> children) {
    return creationWith("destination", tree(std::move(children)));
}

TEST(Find, AMatchInsideAnEarlierChildWinsOverADirectChildFurtherAlong) {
    const ReflectedRef inner = leaf(Size{1, 2});
    const ReflectedRef value =
        tree({{"frame", tree({{"size", inner}})}, {"size", leaf(Size{3, 4})}});
    EXPECT_EQ(find("size", value, 0), inner);
}

TEST(Find, AMatchWinsOverItsOwnChildren) {
    const ReflectedRef outer = tree({{"size", leaf(1.0)}});
    EXPECT_EQ(find("size", tree({{"size", outer}}), 0), outer);
}

TEST(Find, LabelsAreComparedExactly) {
    const ReflectedRef value = tree({{"Size", leaf(1.0)}, {"", leaf(1.0)}, {"sizes", leaf(1.0)}});
    EXPECT_EQ(find("size", value, 0), nullptr);
    EXPECT_EQ(find("", value, 0), nullptr);
}

TEST(Find, ExaminesEightLevelsOfChildren) {
    const ReflectedRef hit = leaf(1.0);
    EXPECT_EQ(find("key", nested(tree({{"key", hit}}), 7), 0), hit);
    EXPECT_EQ(find("key", nested(tree({{"key", hit}}), 8), 0), nullptr);
    EXPECT_EQ(find("key", tree({{"key", hit}}), 8), nullptr);
}

TEST(Find, NothingIsFoundInNothing) { EXPECT_EQ(find("key", nullptr, 0), nullptr); }

TEST(FirstUUID, FindsTheFirstInDepthFirstOrder) {
    const UUID later = UUID::random();
    EXPECT_EQ(
        firstUUID(
            tree({{"a", leaf(1.0)}, {"b", tree({{"", leaf(kIdentifier)}})}, {"c", leaf(later)}}),
            0),
        kIdentifier);
    EXPECT_EQ(firstUUID(leaf(kIdentifier), 0), kIdentifier);
    EXPECT_EQ(firstUUID(tree({{"a", leaf(std::string("text"))}}), 0), std::nullopt);
    EXPECT_EQ(firstUUID(nullptr, 0), std::nullopt);
}

TEST(FirstUUID, FindsOneAtDepth8AndNoneNineLevelsDown) {
    EXPECT_EQ(firstUUID(nested(leaf(kIdentifier), 8), 0), kIdentifier);
    EXPECT_EQ(firstUUID(nested(leaf(kIdentifier), 9), 0), std::nullopt);
    EXPECT_EQ(firstUUID(leaf(kIdentifier), 8), kIdentifier);
    EXPECT_EQ(firstUUID(tree({{"", leaf(kIdentifier)}}), 8), std::nullopt);
}

TEST(Searches, EndInBoundedTimeOnCyclicAndVeryWideGraphs) {
    const auto start = std::chrono::steady_clock::now();
    for (const std::size_t width : {1, 30, 2000}) {
        const auto cycle = std::make_shared<Cycle>(width);
        EXPECT_EQ(find("key", cycle, 0), nullptr);
        EXPECT_EQ(firstUUID(cycle, 0), std::nullopt);
    }
    std::vector<std::pair<std::string, ReflectedRef>> wide(100000, {"x", leaf(1.0)});
    wide.emplace_back("key", leaf(kIdentifier));
    const ReflectedRef value = tree(std::move(wide));
    EXPECT_EQ(find("key", value, 0), nullptr);
    EXPECT_EQ(firstUUID(value, 0), std::nullopt);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
}

TEST(Searches, LookAtAsManyValuesAsTheBudgetSays) {
    std::vector<std::pair<std::string, ReflectedRef>> wide(kMaxVisitedValues - 1, {"x", leaf(1.0)});
    wide.emplace_back("key", leaf(kIdentifier));
    const ReflectedRef value = tree(wide);
    EXPECT_NE(find("key", value, 0), nullptr);
    EXPECT_EQ(firstUUID(value, 0), kIdentifier);
    wide.insert(wide.begin(), {"x", leaf(1.0)});
    EXPECT_EQ(find("key", tree(wide), 0), nullptr);
}

TEST(CaseName, IsTheCasesLabelWithAPayloadAndTheDescriptionWithout) {
    EXPECT_EQ(caseName(std::make_shared<PayloadCase>("locked")), "locked");
    EXPECT_EQ(caseName(std::make_shared<PayloadCase>(std::nullopt)), "described");
    EXPECT_EQ(caseName(leaf(FakeReflected::EnumerationCase{"idle"})), "idle");
}

TEST(CaseName, IsTheDescriptionOfAnyOtherValueAndAbsentForNone) {
    EXPECT_EQ(caseName(leaf(std::string("text"))), "text");
    EXPECT_EQ(caseName(tree({{"label", leaf(1.0)}})), "<reflected value>");
    EXPECT_EQ(caseName(nullptr), std::nullopt);
}

TEST(ParseCreation, AnAbsentRequestGivesTheDefaults) {
    const Creation creation = parseCreation(nullptr);
    EXPECT_EQ(creation.configuration, std::nullopt);
    EXPECT_EQ(creation.size, (Size{1920, 1080}));
    EXPECT_EQ(creation.scale, 2.0);
    EXPECT_EQ(creation.displayID, std::nullopt);
    EXPECT_FALSE(creation.isPreview);
    EXPECT_EQ(creation.presentationMode, "default");
    EXPECT_EQ(creation.activityState, "active");
    EXPECT_EQ(creation.cacheDirectory, std::nullopt);
    EXPECT_EQ(parseCreation(tree({})), Creation());
}

TEST(ParseCreation, TakesEveryField) {
    const Creation creation = parseCreation(tree({
        {"request", tree({{"configuration", leaf(bytesOf("match-desktop"))},
                          {"destination", tree({{"size", leaf(Size{800, 600})},
                                                {"scaleFactor", leaf(1.5)},
                                                {"directDisplayID", leaf(std::uint32_t{6699})}})},
                          {"isPreview", leaf(true)},
                          {"presentationMode", leaf(FakeReflected::EnumerationCase{"locked"})},
                          {"activityState", std::make_shared<PayloadCase>("suspended")},
                          {"cacheDirectory", leaf(FakeReflected::FileURL{"file:///tmp/c"})}})},
    }));
    EXPECT_EQ(creation, (Creation{.configuration = "match-desktop",
                                  .size = {800, 600},
                                  .scale = 1.5,
                                  .displayID = 6699,
                                  .isPreview = true,
                                  .presentationMode = "locked",
                                  .activityState = "suspended",
                                  .cacheDirectory = "file:///tmp/c"}));
}

TEST(ParseCreation, OnlyTheWidthOfASizeIsTested) {
    EXPECT_EQ(parseCreation(creationWithDestination({{"size", leaf(Size{0, 500})}})).size,
              (Size{1920, 1080}));
    EXPECT_EQ(parseCreation(creationWithDestination({{"size", leaf(Size{-1, 500})}})).size,
              (Size{1920, 1080}));
    EXPECT_EQ(parseCreation(creationWithDestination({{"size", leaf(Size{800, 0})}})).size,
              (Size{800, 0}));
    EXPECT_EQ(parseCreation(creationWithDestination({{"size", leaf(Size{800, -5})}})).size,
              (Size{800, -5}));
}

TEST(ParseCreation, AScaleThatIsNotPositiveIsIgnored) {
    for (const double scale : {0.0, -1.0}) {
        EXPECT_EQ(parseCreation(creationWithDestination({{"scaleFactor", leaf(scale)}})).scale,
                  2.0);
    }
}

TEST(ParseCreation, NothingConvertsBetweenKinds) {
    EXPECT_EQ(parseCreation(creationWithDestination({{"directDisplayID", leaf(7.0)}})).displayID,
              std::nullopt);
    EXPECT_EQ(
        parseCreation(creationWithDestination({{"scaleFactor", leaf(std::uint32_t{3})}})).scale,
        2.0);
    EXPECT_FALSE(parseCreation(creationWith("isPreview", leaf(std::uint32_t{1}))).isPreview);
    EXPECT_EQ(parseCreation(creationWith("configuration", leaf(std::string("text")))).configuration,
              std::nullopt);
    EXPECT_EQ(parseCreation(creationWith("cacheDirectory", leaf(std::string("file:///x"))))
                  .cacheDirectory,
              std::nullopt);
}

TEST(ParseCreation, AConfigurationIsNonEmptyUTF8) {
    EXPECT_EQ(parseCreation(creationWith("configuration", leaf(Bytes{}))).configuration,
              std::nullopt);
    EXPECT_EQ(parseCreation(creationWith("configuration", leaf(Bytes{'a', 0xff}))).configuration,
              std::nullopt);
    EXPECT_EQ(parseCreation(creationWith("configuration", leaf(bytesOf("ä")))).configuration, "ä");
}

TEST(ParseCreation, TheDestinationIsSearchedFromItsOwnRoot) {
    // The size lies deeper below the request than a search from there would reach.
    const ReflectedRef request =
        nested(creationWithDestination({{"a", nested(tree({{"size", leaf(Size{5, 5})}}), 4)}}), 5);
    EXPECT_EQ(parseCreation(request).size, (Size{5, 5}));
}

TEST(ParseCreation, AnEarlierSizeInsideTheDestinationWins) {
    EXPECT_EQ(
        parseCreation(creationWithDestination({{"frame", tree({{"size", leaf(Size{10, 10})}})},
                                               {"size", leaf(Size{20, 20})}}))
            .size,
        (Size{10, 10}));
}

TEST(ParseUpdate, AnAbsentRequestGivesTheDefaults) {
    EXPECT_EQ(parseUpdate(nullptr), Update());
    EXPECT_EQ(Update().presentationMode, "default");
    EXPECT_EQ(Update().activityState, "active");
    EXPECT_EQ(parseUpdate(tree({})), Update());
}

TEST(ParseUpdate, PassesSizeAndScaleOnUnchecked) {
    const Update update = parseUpdate(
        creationWithDestination({{"size", leaf(Size{0, -3})}, {"scaleFactor", leaf(-2.0)}}));
    EXPECT_EQ(update.size, (Size{0, -3}));
    EXPECT_EQ(update.scale, -2.0);
}

TEST(ParseUpdate, ValuesOfAnotherKindAreAbsent) {
    const Update update = parseUpdate(
        creationWithDestination({{"size", leaf(2.0)}, {"scaleFactor", leaf(Size{1, 1})}}));
    EXPECT_EQ(update.size, std::nullopt);
    EXPECT_EQ(update.scale, std::nullopt);
}

TEST(ParseUpdate, TakesTheModes) {
    const Update update =
        parseUpdate(tree({{"presentationMode", leaf(FakeReflected::EnumerationCase{"idle"})},
                          {"activityState", leaf(std::string("suspended"))}}));
    EXPECT_EQ(update.presentationMode, "idle");
    EXPECT_EQ(update.activityState, "suspended");
}

} // namespace
} // namespace vantor::PrivateBridge
