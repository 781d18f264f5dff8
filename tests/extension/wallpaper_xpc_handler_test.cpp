#include "extension/wallpaper_xpc_handler.h"
#include "tests/extension/extension_fixture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace vantor {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Op = WallpaperOperation;

const UUID kID = *UUID::parse("12345678-9ABC-DEF0-1234-56789ABCDEF0");
constexpr const char* kIDText = "12345678-9ABC-DEF0-1234-56789ABCDEF0";

class WallpaperXPCHandlerTest : public ExtensionTest {
  protected:
    CaughtReplyRef send(Op operation, std::vector<ObjectRef> arguments = {}) {
        const WallpaperOperationInfo& known = info(operation);
        arguments.resize(static_cast<std::size_t>(known.argumentCount));
        auto caught = std::make_shared<CaughtReply>();
        handler->invoke(operation, std::move(arguments), catchReply(known.reply, caught));
        return caught;
    }
    /// Sends and gives the main queue its turn.
    CaughtReplyRef ask(Op operation, std::vector<ObjectRef> arguments = {}) {
        auto caught = send(operation, std::move(arguments));
        platform.mainQueue().drain();
        return caught;
    }
    CaughtReplyRef acquire(const Request& given, const std::optional<UUID>& id = kID) {
        return ask(Op::acquire, {id ? identifier(*id) : nullptr, creation(given)});
    }
    CaughtReplyRef change(const Request& given, const std::optional<UUID>& id = kID) {
        return ask(Op::update, {id ? identifier(*id) : nullptr, update(given)});
    }
    /// The remote context that an acquire was answered with.
    static PropertyList contextOf(const CaughtReplyRef& reply) {
        return dynamic_cast<FakeObject&>(*reply->object).payload.value();
    }
    int flushes() { return platform.layers().transactions().flushed; }

    std::shared_ptr<WallpaperXPCHandler> handler =
        std::make_shared<WallpaperXPCHandler>(platform, library, registry);
};

// Acquire.

TEST_F(WallpaperXPCHandlerTest, AnAcquireShowsItsChoiceAndAnswersWithTheRemoteContext) {
    const auto reply = acquire({.configuration = "builtin.smoke",
                                .size = Size{.width = 100, .height = 50},
                                .scale = 2,
                                .displayID = 3,
                                .presentationMode = "locked",
                                .activityState = "active"});
    EXPECT_EQ(reply->count, 1);
    EXPECT_EQ(reply->error, std::nullopt);
    ASSERT_NE(reply->object, nullptr);
    EXPECT_EQ(reply->object->objectClass().name(), "WallpaperRemoteContextXPC");
    EXPECT_EQ(contextOf(reply), PropertyList(4711));

    const auto& surface = onlySurface();
    EXPECT_EQ(registry.surface(kID).get(), &surface);
    EXPECT_EQ(surface.context->contextID(), 4711U);
    EXPECT_EQ(surface.displayID, 3U);
    EXPECT_EQ(surface.choice, "builtin.smoke");
    EXPECT_EQ(surface.entryID, "builtin.smoke");
    EXPECT_TRUE(surface.shader->isPlaying());
    EXPECT_EQ(surface.root->frame(), (Rect{.origin = {}, .size = {.width = 100, .height = 50}}));
    EXPECT_EQ(surface.root->contentsScale(), 2);
    EXPECT_EQ(surface.root->backgroundColor(), Color::gray(0, 1));
    EXPECT_EQ(onlyMetalSublayer(surface.root).drawableSize(), (Size{.width = 200, .height = 100}));

    ASSERT_EQ(contexts.contexts.size(), 1U);
    EXPECT_EQ(contexts.options[0],
              (PropertyListDictionary{{.key = "displayId", .value = std::uint32_t{3}}}));
    ASSERT_EQ(contexts.contexts[0]->sent.size(), 1U);
    EXPECT_EQ(contexts.contexts[0]->sent[0].first, "setLayer:");
    EXPECT_EQ(contexts.contexts[0]->sent[0].second, surface.root);
    EXPECT_EQ(flushes(), 1);
}

TEST_F(WallpaperXPCHandlerTest, AnAcquireIsLoggedInOneLine) {
    acquire({.configuration = "builtin.smoke",
             .size = Size{.width = 1512.9, .height = 982.5},
             .scale = 2,
             .displayID = 3,
             .isPreview = true,
             .presentationMode = "locked",
             .activityState = "suspended"});
    EXPECT_THAT(log(), ElementsAre("ACQUIRE " + std::string(kIDText) +
                                   " choice=builtin.smoke 1512x982@2.0x display=3 preview=true "
                                   "mode=locked/suspended"));
}

TEST_F(WallpaperXPCHandlerTest, WhatAnAcquireDoesNotSayIsLoggedAsItsDefault) {
    acquire({});
    EXPECT_EQ(log().at(0), "ACQUIRE " + std::string(kIDText) +
                               " choice=nil 1920x1080@2.0x display=nil preview=false "
                               "mode=default/active");
}

TEST_F(WallpaperXPCHandlerTest, ScalesAreLoggedAsTheShortestDecimalWithAFraction) {
    const std::vector<std::pair<double, std::string>> scales{{1, "@1.0x "},
                                                             {1.5, "@1.5x "},
                                                             {0.1, "@0.1x "},
                                                             {1.0 / 3, "@0.3333333333333333x "},
                                                             {100000, "@100000.0x "}};
    for (const auto& [scale, text] : scales) {
        acquire({.configuration = "builtin.unknown", .scale = scale});
        const auto lines = log();
        EXPECT_NE(lines.at(lines.size() - 2).find(text), std::string::npos)
            << testing::PrintToString(lines);
    }
}

TEST_F(WallpaperXPCHandlerTest, AnAcquireWithoutAnIdentifierIsKnownByItsDisplay) {
    acquire({.displayID = 6699}, std::nullopt);
    EXPECT_NE(registry.surface(*UUID::parse("00000000-0000-0000-0000-000000001a2b")), nullptr);
    acquire({}, std::nullopt);
    EXPECT_NE(registry.surface(UUID{}), nullptr);
    ask(Op::acquire, {object("WallpaperIDXPC"), creation({.displayID = 4294967295U})});
    EXPECT_NE(registry.surface(*UUID::parse("00000000-0000-0000-0000-0000ffffffff")), nullptr)
        << "an identifier that holds no UUID counts as absent";
}

TEST_F(WallpaperXPCHandlerTest, ARequestThatCannotBeDecodedIsServedWithDefaults) {
    const auto reply = ask(Op::acquire, {identifier(kID), nullptr});
    EXPECT_NE(reply->object, nullptr);
    EXPECT_EQ(onlySurface().entryID, "builtin.elec-pcb");
}

TEST_F(WallpaperXPCHandlerTest, ASecondAcquireReusesTheSurfaceAndItsContext) {
    acquire({.configuration = "builtin.smoke", .presentationMode = "locked"});
    ask(Op::invalidate, {identifier(kID)});
    const SurfaceRegistry::Surface* const before = &onlySurface();
    EXPECT_NE(before->teardown, nullptr);
    const int animated = fake(before->root).animatedChanges;

    const auto reply = acquire({.configuration = "builtin.aurora-unknown",
                                .size = Size{.width = 30, .height = 20},
                                .scale = 3,
                                .presentationMode = "idle",
                                .activityState = "suspended"});
    EXPECT_EQ(contextOf(reply), PropertyList(4711));
    EXPECT_EQ(&onlySurface(), before);
    EXPECT_EQ(before->teardown, nullptr);
    EXPECT_EQ(before->presentationMode, "idle");
    EXPECT_EQ(before->activityState, "suspended");
    EXPECT_EQ(before->choice, "builtin.aurora-unknown");
    EXPECT_EQ(before->root->frame().size, (Size{.width = 30, .height = 20}));
    EXPECT_EQ(before->root->contentsScale(), 3);
    EXPECT_EQ(fake(before->root).animatedChanges, animated);
    EXPECT_EQ(contexts.contexts.size(), 1U);
    platform.mainQueue().advance(60);
    EXPECT_EQ(&onlySurface(), before);
}

TEST_F(WallpaperXPCHandlerTest, AReuseResizesTheShaderThatStays) {
    acquire({.configuration = "builtin.smoke"});
    acquire(
        {.configuration = "builtin.smoke", .size = Size{.width = 30, .height = 20}, .scale = 3});
    EXPECT_EQ(onlyMetalSublayer(onlySurface().root).drawableSize(),
              (Size{.width = 90, .height = 60}));
}

TEST_F(WallpaperXPCHandlerTest, AfterTheGracePeriodAnAcquireBuildsANewSurface) {
    acquire({.configuration = "builtin.smoke"});
    ask(Op::invalidate, {identifier(kID)});
    platform.mainQueue().advance(15);
    EXPECT_THAT(registry.surfaces(), IsEmpty());
    EXPECT_EQ(contexts.contexts[0]->count("invalidate"), 1U);
    EXPECT_EQ(contextOf(acquire({.configuration = "builtin.smoke"})), PropertyList(4712));
}

TEST_F(WallpaperXPCHandlerTest, WithoutARemoteContextNothingIsRegistered) {
    contexts.refuses = true;
    const auto reply = acquire({});
    EXPECT_EQ(reply->object, nullptr);
    EXPECT_EQ(reply->error, (Error{.domain = "VantorLockScreen",
                                   .code = 1,
                                   .message = "remote CAContext unavailable"}));
    EXPECT_THAT(registry.surfaces(), IsEmpty());
}

TEST_F(WallpaperXPCHandlerTest, AReplyThatCannotBeBuiltLeavesTheSurfacePresented) {
    dynamic_cast<FakeObjectClass&>(
        const_cast<ObjectClass&>(*platform.objectRuntime().classNamed("WallpaperRemoteContextXPC")))
        .payloadKey = "another key";
    const auto reply = acquire({.configuration = "builtin.smoke"});
    EXPECT_EQ(reply->object, nullptr);
    EXPECT_EQ(reply->error, (Error{.domain = "VantorLockScreen",
                                   .code = 2,
                                   .message = "could not build WallpaperRemoteContextXPC"}));
    EXPECT_NE(onlySurface().shader, nullptr);
}

TEST_F(WallpaperXPCHandlerTest, AnAcquireOfWhatIsNotOfferedIsServedBlack) {
    const auto reply = acquire({.configuration = "builtin.unknown"});
    EXPECT_NE(reply->object, nullptr);
    EXPECT_EQ(onlySurface().shader, nullptr);
    EXPECT_EQ(logged("  no offered wallpaper for builtin.unknown — black"), 1U);
}

using WallpaperXPCHandlerDeathTest = WallpaperXPCHandlerTest;

TEST_F(WallpaperXPCHandlerDeathTest, ASizeThatIsNo64BitIntegerStopsTheProcess) {
    for (const double height : {std::numeric_limits<double>::quiet_NaN(),
                                std::numeric_limits<double>::infinity(), 1e19}) {
        EXPECT_DEATH(acquire({.size = Size{.width = 1, .height = height}}), "height");
    }
}

// Update.

TEST_F(WallpaperXPCHandlerTest, AnUpdateChangesModesAndSizeButNotTheRootsScale) {
    acquire({.configuration = "builtin.smoke", .scale = 2});
    const auto reply = change({.size = Size{.width = 30, .height = 20},
                               .scale = 3,
                               .presentationMode = "idle",
                               .activityState = "suspended"});
    EXPECT_EQ(reply->count, 1);
    EXPECT_EQ(reply->error, std::nullopt);
    const auto& surface = onlySurface();
    EXPECT_EQ(surface.presentationMode, "idle");
    EXPECT_EQ(surface.activityState, "suspended");
    EXPECT_EQ(surface.root->frame().size, (Size{.width = 30, .height = 20}));
    EXPECT_EQ(surface.root->contentsScale(), 2);
    EXPECT_EQ(onlyMetalSublayer(surface.root).drawableSize(), (Size{.width = 90, .height = 60}));
    EXPECT_EQ(logged("UPDATE " + std::string(kIDText) + " mode=idle/suspended"), 1U);
}

TEST_F(WallpaperXPCHandlerTest, WithoutAWidthOrAScaleOrASizeTheFrameStays) {
    acquire({.configuration = "builtin.smoke", .size = Size{.width = 100, .height = 50}});
    for (const Request& request :
         {Request{.size = Size{.width = 0, .height = 20}, .scale = 1, .presentationMode = "a"},
          Request{.size = Size{.width = -1, .height = 20}, .scale = 1, .presentationMode = "b"},
          Request{.size = Size{.width = 30, .height = 20}, .presentationMode = "c"},
          Request{.scale = 1, .presentationMode = "d"}}) {
        change(request);
        EXPECT_EQ(onlySurface().presentationMode, request.presentationMode);
        EXPECT_EQ(onlySurface().root->frame().size, (Size{.width = 100, .height = 50}));
    }
}

TEST_F(WallpaperXPCHandlerTest, TheHeightOfAnUpdateIsNotTested) {
    acquire({});
    change({.size = Size{.width = 30, .height = 0}, .scale = 1});
    EXPECT_EQ(onlySurface().root->frame().size, (Size{.width = 30, .height = 0}));
}

TEST_F(WallpaperXPCHandlerTest, AnAbsentOrUnknownKeyMeansEverySurface) {
    const UUID other = UUID::random();
    acquire({});
    acquire({}, other);
    change({.presentationMode = "idle"}, std::nullopt);
    EXPECT_EQ(registry.surface(kID)->presentationMode, "idle");
    EXPECT_EQ(registry.surface(other)->presentationMode, "idle");
    const UUID unknown = UUID::random();
    change({.presentationMode = "locked"}, unknown);
    EXPECT_EQ(registry.surface(kID)->presentationMode, "locked");
    EXPECT_EQ(registry.surface(other)->presentationMode, "locked");
    change({.presentationMode = "default"}, other);
    EXPECT_EQ(registry.surface(kID)->presentationMode, "locked");
    EXPECT_EQ(logged("UPDATE all mode=idle/active"), 1U);
    EXPECT_EQ(logged("UPDATE " + unknown.text() + " mode=locked/active"), 1U);
}

TEST_F(WallpaperXPCHandlerTest, AnUpdateToLockedLeavesTheScreensStateAndRunsThePolicyOnce) {
    acquire({.configuration = "builtin.smoke"});
    for (const bool locked : {false, true}) {
        registry.setScreenLocked(locked);
        const int before = flushes();
        change({.presentationMode = "locked"});
        EXPECT_EQ(registry.screenLocked(), locked);
        EXPECT_EQ(flushes(), before + 1);
        EXPECT_TRUE(onlySurface().shader->isPlaying());
    }
}

TEST_F(WallpaperXPCHandlerTest, AnyOtherModeUnlocksTheScreenAndRunsThePolicyTwice) {
    acquire({.configuration = "builtin.smoke"});
    for (const char* mode : {"default", "idle", "Locked"}) {
        registry.setScreenLocked(true);
        const int before = flushes();
        change({.presentationMode = mode});
        EXPECT_FALSE(registry.screenLocked());
        EXPECT_EQ(flushes(), before + 2);
    }
    EXPECT_FALSE(onlySurface().shader->isPlaying());
}

// Invalidate.

TEST_F(WallpaperXPCHandlerTest, AnInvalidateReleasesTheSurface) {
    acquire({.configuration = "builtin.smoke", .presentationMode = "locked"});
    const auto reply = ask(Op::invalidate, {identifier(kID)});
    EXPECT_EQ(reply->count, 1);
    EXPECT_EQ(reply->error, std::nullopt);
    EXPECT_FALSE(onlySurface().shader->isPlaying());
    EXPECT_NE(onlySurface().teardown, nullptr);
    EXPECT_EQ(logged("INVALIDATE " + std::string(kIDText)), 1U);
}

TEST_F(WallpaperXPCHandlerTest, AnInvalidateWithoutAKnownKeyReleasesNothing) {
    acquire({});
    const UUID unknown = UUID::random();
    EXPECT_EQ(ask(Op::invalidate, {identifier(unknown)})->count, 1);
    EXPECT_EQ(ask(Op::invalidate)->count, 1);
    EXPECT_EQ(onlySurface().teardown, nullptr);
    EXPECT_EQ(logged("INVALIDATE " + unknown.text()), 1U);
    EXPECT_EQ(logged("INVALIDATE nil"), 1U);
}

// View models.

TEST_F(WallpaperXPCHandlerTest, ViewModelsAreAnsweredWithTheCatalogsCount) {
    const auto reply = ask(Op::provideSettingsViewModels, {object("WallpaperContentTypeSetXPC")});
    ASSERT_NE(reply->object, nullptr);
    EXPECT_EQ(reply->count, 1);
    EXPECT_EQ(reply->error, std::nullopt);
    EXPECT_EQ(reply->object->objectClass().name(), "WallpaperSettingsViewModelsXPC");
    EXPECT_EQ(log().back(), "PROVIDE VIEW MODELS → 11 tiles");
}

TEST_F(WallpaperXPCHandlerTest, ViewModelsThatCannotBeBuiltAreAnError) {
    platform.addedClass("WallpaperSettingsViewModelsXPC").payloadKey = "AnotherName";
    const auto reply = ask(Op::provideSettingsViewModels);
    EXPECT_EQ(reply->count, 1);
    EXPECT_EQ(reply->object, nullptr);
    EXPECT_EQ(
        reply->error,
        (Error{.domain = "VantorLockScreen", .code = 3, .message = "view models unavailable"}));
    EXPECT_EQ(logged("bridge: WallpaperSettingsViewModelsXPC decode error: no value for the key "
                     "\"AnotherName\""),
              1U);
    EXPECT_EQ(log().back(), "PROVIDE VIEW MODELS → FAILED");
}

// The context menu.

class ContextMenuTest : public WallpaperXPCHandlerTest {
  protected:
    ContextMenuTest() { platform.workspace().applications["com.nimbara.app"] = "/app"; }

    /// Sends the menu item and gives what was opened by it.
    std::vector<std::filesystem::path> choose(const ObjectRef& item) {
        platform.workspace().opened.clear();
        const auto reply = send(Op::invokeContextMenuAction, {item});
        EXPECT_EQ(reply->count, 1) << "answered on the connection's queue";
        EXPECT_EQ(reply->error, std::nullopt);
        return platform.workspace().opened;
    }
    ObjectRef text(const std::string& string) {
        auto made = std::make_shared<FakeObject>(*platform.objectRuntime().classNamed("NSString"));
        made->string = string;
        return made;
    }
};

TEST_F(ContextMenuTest, AnItemThatHoldsTheMarkerOpensTheHostApplication) {
    EXPECT_THAT(choose(text("open-app")), ElementsAre("/app"));
    EXPECT_THAT(choose(text("x-open-app-y")), ElementsAre("/app"));
}

TEST_F(ContextMenuTest, AnyOtherItemOpensNothing) {
    EXPECT_THAT(choose(text("open")), IsEmpty());
    EXPECT_THAT(choose(text("Open-App")), IsEmpty());
    EXPECT_THAT(choose(nullptr), IsEmpty());
}

TEST_F(ContextMenuTest, AnItemThatIsNoStringIsTakenByItsDescription) {
    auto item =
        std::make_shared<FakeObject>(*platform.objectRuntime().classNamed("WallpaperChoiceIDXPC"));
    item->text = "<choice open-app>";
    EXPECT_THAT(choose(item), ElementsAre("/app"));
    item->string = "something else";
    EXPECT_THAT(choose(item), IsEmpty()) << "a string's own text comes first";
}

TEST_F(ContextMenuTest, AnApplicationThatIsNotInstalledIsNotOpened) {
    platform.workspace().applications.clear();
    EXPECT_THAT(choose(text("open-app")), IsEmpty());
}

// The rest.

TEST_F(WallpaperXPCHandlerTest, TrivialOperationsAnswerAtOnceWithTheirNeutralReply) {
    for (const WallpaperOperationInfo& known : wallpaperOperations()) {
        if (known.queue == HandlerQueue::main) {
            continue;
        }
        for (const ObjectRef& argument : {ObjectRef(), object("AuditTokenXPC")}) {
            const auto reply = send(known.operation, {argument});
            EXPECT_EQ(reply->count, 1) << known.selector;
            EXPECT_EQ(reply->error, std::nullopt) << known.selector;
            EXPECT_EQ(reply->object, nullptr) << known.selector;
            if (known.reply == ReplyShape::booleanAndError) {
                EXPECT_EQ(reply->boolean, known.operation == Op::isChoiceDownloaded)
                    << known.selector;
            }
        }
    }
    EXPECT_EQ(platform.mainQueue().postedCount(), 0U);
}

TEST_F(WallpaperXPCHandlerTest, WhatTouchesSurfacesWaitsForTheMainQueue) {
    for (const WallpaperOperationInfo& known : wallpaperOperations()) {
        if (known.queue != HandlerQueue::main) {
            continue;
        }
        const auto reply = send(known.operation);
        EXPECT_EQ(reply->count, 0) << known.selector;
        EXPECT_THAT(registry.surfaces(), IsEmpty());
        platform.mainQueue().drain();
        EXPECT_EQ(reply->count, 1) << known.selector;
        registry.scheduleTeardown(UUID{});
        platform.mainQueue().advance(15);
    }
}

TEST_F(WallpaperXPCHandlerTest, ARequestOutlivesItsConnection) {
    const auto reply = send(Op::acquire, {identifier(kID), creation({})});
    handler.reset();
    platform.mainQueue().drain();
    EXPECT_EQ(reply->count, 1);
    EXPECT_EQ(registry.surfaces().size(), 1U);
}

TEST_F(WallpaperXPCHandlerTest, TheAgentIsKeptUntilItIsCleared) {
    EXPECT_EQ(handler->agent(), nullptr);
    const auto proxy = std::make_shared<FakeAgentProxy>();
    handler->setAgent(proxy);
    EXPECT_EQ(handler->agent(), proxy);
    handler->setAgent(nullptr);
    EXPECT_EQ(handler->agent(), nullptr);
}

} // namespace
} // namespace vantor
