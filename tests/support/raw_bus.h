#pragma once
// The bytes of the connection's wire, written and read without the library that both ends use: for
// peers that misbehave. D-Bus specification 0.41, "Message Protocol" and "Authentication Protocol".

#include "platform/object_runtime.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vantor::rawbus {

/// What a client says before its first message, as this process's user.
Bytes authentication();

struct MethodCall {
    std::uint32_t serial = 1;
    std::string interface;
    std::string member;
    /// The signature field; by default an "ay" for each argument.
    std::optional<std::string> signature = std::nullopt;
    std::vector<Bytes> arguments = {};
};

/// One whole little-endian message.
Bytes marshal(const MethodCall& call);

enum class MessageType : std::uint8_t { methodCall = 1, methodReturn = 2, error = 3, signal = 4 };

struct Message {
    MessageType type = MessageType::signal;
    std::uint32_t replySerial = 0;
    Bytes body;
};

/// The first whole message of a stream, with its length in bytes; nothing while there is none.
std::optional<std::pair<Message, std::size_t>> unmarshal(std::span<const std::uint8_t> stream);

} // namespace vantor::rawbus
