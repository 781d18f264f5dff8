#include "platform/wallpaper_protocol.h"

#include <array>

namespace vantor {
namespace {

using enum ReplyShape;
using Op = WallpaperOperation;

constexpr auto kMain = HandlerQueue::main;
constexpr auto kConnection = HandlerQueue::connection;

constexpr std::array<WallpaperOperationInfo, 21> kOperations{{
    {Op::acquire, "acquireWithId:request:reply:", 2, objectAndError, kMain},
    {Op::update, "updateWithId:request:reply:", 2, error, kMain},
    {Op::invalidate, "invalidateWithId:reply:", 1, error, kMain},
    {Op::snapshot, "snapshotWithId:reply:", 1, objectAndError, kConnection},
    {Op::provideSettingsViewModels, "provideSettingsViewModelsWithContentTypes:reply:", 1,
     objectAndError, kMain},
    {Op::addChoiceRequest, "addChoiceRequestWithChoiceRequest:onBehalfOfProcess:reply:", 2,
     objectAndError, kConnection},
    {Op::removeChoiceRequest, "removeChoiceRequestWithChoiceRequest:reply:", 1, error, kConnection},
    {Op::selectedChoicesDidChange, "selectedChoicesDidChangeFor:reply:", 1, error, kConnection},
    {Op::invokeContextMenuAction, "invokeContextMenuActionWithMenuItemID:groupItemID:reply:", 2,
     error, kConnection},
    {Op::isChoiceDownloaded, "isChoiceDownloadedWith:reply:", 1, booleanAndError, kConnection},
    {Op::download, "downloadWithChoiceID:reply:", 1, error, kConnection},
    {Op::pauseDownload, "pauseDownloadFor:reply:", 1, error, kConnection},
    {Op::cancelDownload, "cancelDownloadFor:reply:", 1, error, kConnection},
    {Op::resumeDownload, "resumeDownloadFor:reply:", 1, error, kConnection},
    {Op::removeDownload, "removeDownloadFor:reply:", 1, error, kConnection},
    {Op::migrateSelectedChoice, "migrateSelectedChoiceFor:reply:", 1, objectAndError, kConnection},
    {Op::migrate, "migrateFrom:to:reply:", 2, error, kConnection},
    {Op::skipShuffledContent, "skipShuffledContentWithId:reply:", 1, error, kConnection},
    {Op::canSkipShuffledContent, "canSkipShuffledContentWithId:reply:", 1, booleanAndError,
     kConnection},
    {Op::handleDebugRequest, "handleDebugRequestFor:reply:", 1, objectAndError, kConnection},
    {Op::handleNotification, "handleNotificationWithNamed:reply:", 1, error, kConnection},
}};

constexpr std::array<AgentOperationInfo, 4> kAgentOperations{{
    {AgentOperation::ping, "pingWithId:", 1, none},
    {AgentOperation::updateSettingsViewModels, "updateSettingsViewModels:reply:", 1, error},
    {AgentOperation::requestReadOnlyAccess, "requestReadOnlyAccessTo:reply:", 1, error},
    {AgentOperation::invalidateSnapshots, "invalidateSnapshotsWithReply:", 0, error},
}};

consteval bool inOrder() {
    for (std::size_t i = 0; i < kOperations.size(); ++i) {
        if (static_cast<std::size_t>(kOperations[i].operation) != i) {
            return false;
        }
    }
    for (std::size_t i = 0; i < kAgentOperations.size(); ++i) {
        if (static_cast<std::size_t>(kAgentOperations[i].operation) != i) {
            return false;
        }
    }
    return true;
}
static_assert(inOrder(), "info() indexes the tables by operation");

consteval std::array<ArgumentSlot, kArgumentSlotCount> makeSlots() {
    std::array<ArgumentSlot, kArgumentSlotCount> slots{};
    std::size_t count = 0;
    for (const auto& operation : kOperations) {
        for (int index = 0; index < operation.argumentCount; ++index) {
            slots.at(count++) = {operation.selector, index, false};
        }
        if (operation.reply == objectAndError) {
            slots.at(count++) = {operation.selector, 0, true};
        }
    }
    if (count != kArgumentSlotCount) {
        throw "the table and kArgumentSlotCount disagree";
    }
    return slots;
}
constexpr auto kSlots = makeSlots();

} // namespace

std::span<const WallpaperOperationInfo> wallpaperOperations() { return kOperations; }
std::span<const AgentOperationInfo> agentOperations() { return kAgentOperations; }

const WallpaperOperationInfo& info(WallpaperOperation operation) {
    return kOperations.at(static_cast<std::size_t>(operation));
}
const AgentOperationInfo& info(AgentOperation operation) {
    return kAgentOperations.at(static_cast<std::size_t>(operation));
}

std::optional<WallpaperOperation> wallpaperOperation(std::string_view selector) {
    for (const auto& entry : kOperations) {
        if (entry.selector == selector) {
            return entry.operation;
        }
    }
    return std::nullopt;
}

std::optional<AgentOperation> agentOperation(std::string_view selector) {
    for (const auto& entry : kAgentOperations) {
        if (entry.selector == selector) {
            return entry.operation;
        }
    }
    return std::nullopt;
}

std::span<const ArgumentSlot, kArgumentSlotCount> wallpaperArgumentSlots() { return kSlots; }

} // namespace vantor
