#pragma once
// sd-bus objects with one owner each, and the parts of messages that both ends read and write.

#include "platform/object_runtime.h"
#include "platform/result.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <systemd/sd-bus.h>
#include <systemd/sd-event.h>
#include <vector>

namespace vantor::xpc {

struct BusDeleter {
    void operator()(sd_bus* bus) const {
        sd_bus_close(bus);
        sd_bus_unref(bus);
    }
};
struct MessageDeleter {
    void operator()(sd_bus_message* message) const { sd_bus_message_unref(message); }
};
struct EventDeleter {
    void operator()(sd_event* event) const { sd_event_unref(event); }
};
struct SlotDeleter {
    void operator()(sd_bus_slot* slot) const { sd_bus_slot_unref(slot); }
};
using Bus = std::unique_ptr<sd_bus, BusDeleter>;
using Message = std::unique_ptr<sd_bus_message, MessageDeleter>;
using Event = std::unique_ptr<sd_event, EventDeleter>;
using Slot = std::unique_ptr<sd_bus_slot, SlotDeleter>;

/// Which end of a socket a bus object is.
enum class Side { server, client };

/// A bus object on `descriptor`, which it owns from here on; null when it cannot be made.
/// Authentication as the wire says. Not yet started.
Bus openBus(int descriptor, Side side);

/// A method call's "ay" arguments, `count` of them and nothing else. The spans hold while the
/// message does. The error says what is wrong with the message.
Result<std::vector<std::span<const std::uint8_t>>> readArguments(sd_bus_message* message,
                                                                 int count);

/// Appends one "ay"; false when it does not fit the message.
bool appendBytes(sd_bus_message* message, std::span<const std::uint8_t> bytes);

/// Answers a call with an error.
void replyError(sd_bus_message* call, const Error& error);

/// The error that an error reply carries.
Error errorOf(sd_bus_message* reply);

bool isMethodCall(sd_bus_message* message);

/// The member that a call names on `interface`; nothing when it is for another one.
std::optional<std::string_view> memberOn(sd_bus_message* call, std::string_view interface);

/// Whether the message says that the connection has gone.
bool isDisconnection(sd_bus_message* message);

} // namespace vantor::xpc
