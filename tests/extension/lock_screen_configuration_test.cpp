#include "extension/lock_screen_configuration.h"
#include "extension/wallpaper_xpc_handler.h"
#include "tests/extension/extension_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class LockScreenConfigurationTest : public ExtensionTest {
  protected:
    std::shared_ptr<FakeConnection> connect(int pid = 42) {
        auto connection = std::make_shared<FakeConnection>(pid);
        EXPECT_TRUE(configuration.accept(connection));
        return connection;
    }

    LockScreenConfiguration configuration{platform, library, registry};
};

TEST_F(LockScreenConfigurationTest, AConnectionIsConfiguredAndResumed) {
    const auto connection = connect();
    EXPECT_TRUE(connection->isResumed());
    EXPECT_EQ(connection->exportedInterface().protocolName(), "WallpaperExtensionXPCProtocol");
    EXPECT_EQ(connection->remoteInterface().protocolName(), "WallpaperExtensionProxyXPCProtocol");
    EXPECT_EQ(connection->remoteInterface().slotCount(), 0U);
    EXPECT_NE(std::dynamic_pointer_cast<WallpaperXPCHandler>(connection->exportedObject()),
              nullptr);
    EXPECT_THAT(log(), ElementsAre("accept pid 42"));
}

TEST_F(LockScreenConfigurationTest, EverySlotCarriesThePlatformsAndTheAgentsClasses) {
    const auto connection = connect();
    EXPECT_EQ(connection->exportedInterface().slotCount(), 32U);
    for (const ArgumentSlot& slot : wallpaperArgumentSlots()) {
        EXPECT_THAT(connection->exportedInterface().classes(slot), SizeIs(7 + 15)) << slot.selector;
    }
}

TEST_F(LockScreenConfigurationTest, ACallerThatFailsTheCheckIsLeftAsItCame) {
    platform.codeIdentity().validity = {{13, false}};
    const auto connection = std::make_shared<FakeConnection>(13);
    EXPECT_FALSE(configuration.accept(connection));
    EXPECT_FALSE(connection->isConfigured());
    EXPECT_FALSE(connection->isResumed());
    EXPECT_THAT(library.handlers(), IsEmpty());
    EXPECT_THAT(log(), ElementsAre("accept pid 13", "XPC rejected: non-Apple caller pid 13"));
}

TEST_F(LockScreenConfigurationTest, ACallerThatHasExitedAlreadyIsAccepted) {
    platform.codeIdentity().validity = {{13, false}};
    EXPECT_TRUE(connect(14)->isResumed());
}

TEST_F(LockScreenConfigurationTest, TwoConnectionsHaveTwoHandlersAndLoseTheirAgentsApart) {
    const auto first = connect(1);
    const auto second = connect(2);
    const auto handlers = library.handlers();
    ASSERT_THAT(handlers, SizeIs(2));
    EXPECT_EQ(handlers[0]->agent(), first->agent);
    EXPECT_EQ(handlers[1]->agent(), second->agent);
    first->invalidate();
    EXPECT_EQ(handlers[0]->agent(), nullptr);
    EXPECT_EQ(handlers[1]->agent(), second->agent);
}

TEST_F(LockScreenConfigurationTest, AHandlerGoesWithItsConnection) {
    auto connection = connect();
    connection->invalidate();
    EXPECT_THAT(library.handlers(), IsEmpty());
    connection = connect();
    EXPECT_THAT(library.handlers(), SizeIs(1));
    connection.reset();
    EXPECT_THAT(library.handlers(), IsEmpty());
}

TEST_F(LockScreenConfigurationTest, AProxyOfAnotherProtocolIsNoAgent) {
    auto connection = std::make_shared<FakeConnection>(1);
    connection->agent->protocol = "SomethingElse";
    EXPECT_TRUE(configuration.accept(connection));
    ASSERT_THAT(library.handlers(), SizeIs(1));
    EXPECT_EQ(library.handlers()[0]->agent(), nullptr);
}

TEST_F(LockScreenConfigurationTest, ARequestTravelsFromTheConnectionToASurface) {
    const auto connection = connect();
    const auto reply = connection->send(
        WallpaperOperation::acquire,
        {identifier(UUID::random()), creation({.configuration = "builtin.smoke"})});
    platform.mainQueue().drain();
    EXPECT_EQ(reply->error, std::nullopt);
    EXPECT_EQ(onlySurface().entryID, "builtin.smoke");
}

TEST_F(LockScreenConfigurationTest, AClassOutsideOfTheListsIsRefusedLoggedAndCostsNothingElse) {
    const auto connection = connect();
    const FakeObjectClass& foreign = platform.addClass("SomeoneElsesClass");
    const auto refused = connection->send(WallpaperOperation::acquire,
                                          {std::make_shared<FakeObject>(foreign), nullptr});
    EXPECT_NE(refused->error, std::nullopt);
    EXPECT_EQ(log().size(), 2U);
    EXPECT_TRUE(log().back().starts_with("XPC refused: ")) << log().back();
    EXPECT_NE(log().back().find("SomeoneElsesClass"), std::string::npos);
    EXPECT_EQ(connection->send(WallpaperOperation::isChoiceDownloaded)->boolean, true);
}

} // namespace
} // namespace vantor
