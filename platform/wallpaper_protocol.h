#pragma once
// The wallpaper agent's protocol, as one table: selectors, arguments, replies and the queue each
// operation is handled on. Both ends, the allow-lists and the tests are driven by it.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace vantor {

/// The operations that the extension exports, in the protocol's order.
enum class WallpaperOperation : std::uint8_t {
    acquire,
    update,
    invalidate,
    snapshot,
    provideSettingsViewModels,
    addChoiceRequest,
    removeChoiceRequest,
    selectedChoicesDidChange,
    invokeContextMenuAction,
    isChoiceDownloaded,
    download,
    pauseDownload,
    cancelDownload,
    resumeDownload,
    removeDownload,
    migrateSelectedChoice,
    migrate,
    skipShuffledContent,
    canSkipShuffledContent,
    handleDebugRequest,
    handleNotification,
};

/// The operations that the agent's proxy offers, in its protocol's order.
enum class AgentOperation : std::uint8_t {
    ping,
    updateSettingsViewModels,
    requestReadOnlyAccess,
    invalidateSnapshots,
};

enum class ReplyShape : std::uint8_t { none, error, objectAndError, booleanAndError };

/// Where an operation is handled: at once on the connection's queue, or posted to the main queue.
enum class HandlerQueue : std::uint8_t { connection, main };

struct WallpaperOperationInfo {
    WallpaperOperation operation;
    std::string_view selector;
    int argumentCount;
    ReplyShape reply;
    HandlerQueue queue;
};

struct AgentOperationInfo {
    AgentOperation operation;
    std::string_view selector;
    int argumentCount;
    ReplyShape reply;
};

inline constexpr std::string_view kWallpaperProtocolName = "WallpaperExtensionXPCProtocol";
inline constexpr std::string_view kAgentProtocolName = "WallpaperExtensionProxyXPCProtocol";

std::span<const WallpaperOperationInfo> wallpaperOperations();
std::span<const AgentOperationInfo> agentOperations();

const WallpaperOperationInfo& info(WallpaperOperation operation);
const AgentOperationInfo& info(AgentOperation operation);

/// The operation of that selector, or nothing.
std::optional<WallpaperOperation> wallpaperOperation(std::string_view selector);
std::optional<AgentOperation> agentOperation(std::string_view selector);

/// One place of a message that carries an object and so has a class allow-list.
struct ArgumentSlot {
    std::string_view selector;
    int argumentIndex;
    bool ofReply;
    bool operator==(const ArgumentSlot&) const = default;
};

inline constexpr std::size_t kArgumentSlotCount = 32;

/// The slots of the exported protocol: per operation its arguments, then its reply's object.
std::span<const ArgumentSlot, kArgumentSlotCount> wallpaperArgumentSlots();

} // namespace vantor
