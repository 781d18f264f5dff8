#include "platform/wallpaper_protocol.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace vantor {
namespace {

TEST(WallpaperProtocol, Has21OperationsAndFourOfTheAgents) {
    EXPECT_EQ(wallpaperOperations().size(), 21U);
    EXPECT_EQ(agentOperations().size(), 4U);
}

TEST(WallpaperProtocol, PutsOnlyTheSubstantiveOperationsOnTheMainQueue) {
    std::set<std::string_view> main;
    for (const auto& operation : wallpaperOperations()) {
        if (operation.queue == HandlerQueue::main) {
            main.insert(operation.selector);
        }
    }
    EXPECT_EQ(main,
              (std::set<std::string_view>{
                  "acquireWithId:request:reply:", "updateWithId:request:reply:",
                  "invalidateWithId:reply:", "provideSettingsViewModelsWithContentTypes:reply:"}));
}

TEST(WallpaperProtocol, SelectorsHaveOneColonForEachArgumentAndTheReply) {
    for (const auto& operation : wallpaperOperations()) {
        const auto colons = std::count(operation.selector.begin(), operation.selector.end(), ':');
        EXPECT_EQ(colons, operation.argumentCount + 1) << operation.selector;
        EXPECT_EQ(wallpaperOperation(operation.selector), operation.operation);
    }
    EXPECT_EQ(wallpaperOperation("acquire"), std::nullopt);
    EXPECT_EQ(agentOperation("pingWithId:"), AgentOperation::ping);
}

TEST(WallpaperProtocol, ListsThe32SlotsInTheProtocolsOrder) {
    const auto slots = wallpaperArgumentSlots();
    EXPECT_EQ(slots[0], (ArgumentSlot{"acquireWithId:request:reply:", 0, false}));
    EXPECT_EQ(slots[2], (ArgumentSlot{"acquireWithId:request:reply:", 0, true}));
    EXPECT_EQ(slots[5], (ArgumentSlot{"invalidateWithId:reply:", 0, false}));
    EXPECT_EQ(
        slots[12],
        (ArgumentSlot{"addChoiceRequestWithChoiceRequest:onBehalfOfProcess:reply:", 0, true}));
    EXPECT_EQ(slots[26], (ArgumentSlot{"migrateFrom:to:reply:", 1, false}));
    EXPECT_EQ(slots[31], (ArgumentSlot{"handleNotificationWithNamed:reply:", 0, false}));
}

} // namespace
} // namespace vantor
