#include "bridge/remote_context.h"

#include "tests/support/fake_platform.h"

#include <gtest/gtest.h>

namespace vantor::PrivateBridge {
namespace {

using RemoteContextTest = FakePlatformTest;

/// What `makeRemoteContext` gives for a context that reports this identifier.
std::shared_ptr<RemoteContext> reporting(FakePlatform& platform,
                                         std::optional<PropertyList> contextId) {
    auto& contextClass = platform.addClass("CAContext");
    contextClass.classMethods["remoteContextWithOptions:"] =
        [&contextClass, contextId](const PropertyListDictionary&) -> ObjectRef {
        auto context = std::make_shared<FakeObject>(contextClass);
        if (contextId) {
            context->values.emplace("contextId", *contextId);
        }
        return context;
    };
    return makeRemoteContext(platform, std::nullopt);
}

TEST_F(RemoteContextTest, KeepsTheContextAndItsIdentifier) {
    auto& contexts = platform.addRemoteContexts();
    auto context = makeRemoteContext(platform, 6699);
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context->contextID(), 4711U);
    ASSERT_EQ(contexts.contexts.size(), 1U);
    EXPECT_EQ(context->object(), contexts.contexts[0]);
    EXPECT_EQ(contexts.options[0], (PropertyListDictionary{{"displayId", 6699}}));
    const std::weak_ptr<FakeObject> object = contexts.contexts[0];
    contexts.contexts.clear();
    EXPECT_FALSE(object.expired());
    context.reset();
    EXPECT_TRUE(object.expired());
}

TEST_F(RemoteContextTest, WithoutADisplayTheOptionsAreEmpty) {
    auto& contexts = platform.addRemoteContexts();
    EXPECT_NE(makeRemoteContext(platform, std::nullopt), nullptr);
    ASSERT_EQ(contexts.options.size(), 1U);
    EXPECT_TRUE(contexts.options[0].empty());
}

TEST_F(RemoteContextTest, GivesNothingWithoutTheClass) {
    EXPECT_EQ(makeRemoteContext(platform, 1), nullptr);
    EXPECT_TRUE(log().empty());
}

TEST_F(RemoteContextTest, GivesNothingForAClassThatIsNoObjectClass) {
    platform.addRemoteContexts().objectSubclass = false;
    EXPECT_EQ(makeRemoteContext(platform, 1), nullptr);
}

TEST_F(RemoteContextTest, GivesNothingWithoutTheClassMethod) {
    platform.addRemoteContexts().classMethods.clear();
    EXPECT_EQ(makeRemoteContext(platform, 1), nullptr);
    EXPECT_TRUE(log().empty());
}

TEST_F(RemoteContextTest, GivesNothingWhenTheSystemRefuses) {
    platform.addRemoteContexts().refuses = true;
    EXPECT_EQ(makeRemoteContext(platform, 1), nullptr);
}

TEST_F(RemoteContextTest, GivesNothingForAContextWithIdentifierZero) {
    EXPECT_EQ(reporting(platform, PropertyList(0)), nullptr);
}

TEST_F(RemoteContextTest, GivesNothingForAContextWithoutAnIdentifier) {
    EXPECT_EQ(reporting(platform, std::nullopt), nullptr);
}

TEST_F(RemoteContextTest, GivesNothingForAnIdentifierThatIsNoNumber) {
    EXPECT_EQ(reporting(platform, PropertyList("4711")), nullptr);
}

TEST_F(RemoteContextTest, TakesTheLowerHalfOfAWideIdentifier) {
    const auto context = reporting(platform, PropertyList((std::int64_t{1} << 32) + 5));
    ASSERT_NE(context, nullptr);
    EXPECT_EQ(context->contextID(), 5U);
}

TEST_F(RemoteContextTest, GivesNothingForAWideIdentifierWhoseLowerHalfIsZero) {
    EXPECT_EQ(reporting(platform, PropertyList(std::int64_t{1} << 32)), nullptr);
}

} // namespace
} // namespace vantor::PrivateBridge
