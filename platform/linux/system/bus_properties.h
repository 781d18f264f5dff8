#pragma once
// Boolean properties of other programs' objects on a message bus, and their changes. Main thread.

#include <optional>
#include <string_view>
#include <systemd/sd-bus.h>

namespace vantor {

struct BusProperty {
    const char* service;
    const char* path;
    const char* interface;
    const char* name;
};

/// Asks for the property, which `got` hears, and hears of its changes from then on in `changed`.
/// Nothing waits. A negative error number when the bus takes no more.
int followProperty(sd_bus* bus, const BusProperty& property, sd_bus_message_handler_t changed,
                   sd_bus_message_handler_t got, void* data);

/// What a "PropertiesChanged" says about the property; nothing when it does not stand in it.
std::optional<bool> changedBoolean(sd_bus_message* message, std::string_view interface,
                                   std::string_view name);

/// What the answer to a question for the property says; nothing when it is an error.
std::optional<bool> booleanReply(sd_bus_message* reply);

} // namespace vantor
