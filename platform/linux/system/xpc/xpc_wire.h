#pragma once
// How the agent's protocol crosses a stream socket: D-Bus, peer to peer, without a bus daemon.
//
// Authentication is EXTERNAL with the kernel's peer credentials; anonymous peers are refused, and
// descriptors cannot be passed. Each operation is a method of kWallpaperInterface (the extension's
// side) or kAgentInterface (the agent's side) at kObjectPath. Its member is the selector with every
// colon replaced by an underscore: "acquireWithId_request_reply_".
//
//   arguments   one "ay" for each: a keyed archive of the object, or no bytes for an absent one
//   reply       error only: nothing        object and error: "ay"        boolean and error: "b"
//   an error    the D-Bus error kErrorName with message (s), domain (s) and code (i)
//
// "pingWithId:" has no reply and is sent without expecting one.

#include "platform/result.h"
#include "platform/wallpaper_protocol.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

struct sd_bus_message;

namespace vantor::xpc {

inline constexpr const char* kObjectPath = "/com/nimbara/vantor";
inline constexpr const char* kWallpaperInterface = "com.nimbara.vantor.WallpaperExtension";
inline constexpr const char* kAgentInterface = "com.nimbara.vantor.WallpaperAgent";
inline constexpr const char* kErrorName = "com.nimbara.vantor.Error";

/// Errors of the transport itself carry this domain.
inline constexpr const char* kTransportDomain = "VantorTransport";
enum class TransportError : int {
    refusedArgument = 1,
    tooManyCalls = 2,
    wrongSignature = 3,
    disconnected = 4,
    unknownOperation = 5,
    badReply = 6,
};
Error transportError(TransportError code, std::string message);

/// All arguments of one message together, in bytes.
inline constexpr std::size_t kMaxMessageBytes = 16U << 20U;
/// Calls of one connection that have not been answered.
inline constexpr std::size_t kMaxOutstandingCalls = 64;
/// Replies and calls that wait for the peer to read them; a peer with more is closed.
inline constexpr std::size_t kMaxUnreadMessages = 256;
/// Refusals of one connection that are noted; a peer cannot fill the log.
inline constexpr std::size_t kMaxNotedRefusals = 16;
/// Connections that are served at a time.
inline constexpr std::size_t kMaxConnections = 128;

/// The member that stands for a selector.
std::string memberOf(std::string_view selector);
/// The operation of a member, or nothing.
std::optional<WallpaperOperation> wallpaperOperationOf(std::string_view member);
std::optional<AgentOperation> agentOperationOf(std::string_view member);

} // namespace vantor::xpc
