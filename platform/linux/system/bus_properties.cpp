#include "platform/linux/system/bus_properties.h"

namespace vantor {
namespace {

constexpr const char* kProperties = "org.freedesktop.DBus.Properties";

} // namespace

int followProperty(sd_bus* bus, const BusProperty& property, sd_bus_message_handler_t changed,
                   sd_bus_message_handler_t got, void* data) {
    const int status =
        sd_bus_match_signal_async(bus, nullptr, property.service, property.path, kProperties,
                                  "PropertiesChanged", changed, nullptr, data);
    return status < 0 ? status
                      : sd_bus_call_method_async(bus, nullptr, property.service, property.path,
                                                 kProperties, "Get", got, data, "ss",
                                                 property.interface, property.name);
}

std::optional<bool> changedBoolean(sd_bus_message* message, std::string_view interface,
                                   std::string_view name) {
    const char* of = nullptr;
    if (sd_bus_message_read(message, "s", &of) < 0 || of != interface ||
        sd_bus_message_enter_container(message, SD_BUS_TYPE_ARRAY, "{sv}") < 0) {
        return std::nullopt;
    }
    while (sd_bus_message_enter_container(message, SD_BUS_TYPE_DICT_ENTRY, "sv") > 0) {
        const char* key = nullptr;
        if (sd_bus_message_read(message, "s", &key) < 0) {
            return std::nullopt;
        }
        int value = 0;
        if (key == name) {
            return sd_bus_message_read(message, "v", "b", &value) > 0 ? std::optional(value != 0)
                                                                      : std::nullopt;
        }
        if (sd_bus_message_skip(message, "v") < 0 || sd_bus_message_exit_container(message) < 0) {
            return std::nullopt;
        }
    }
    return std::nullopt;
}

std::optional<bool> booleanReply(sd_bus_message* reply) {
    int value = 0;
    return sd_bus_message_is_method_error(reply, nullptr) == 0 &&
                   sd_bus_message_read(reply, "v", "b", &value) > 0
               ? std::optional(value != 0)
               : std::nullopt;
}

} // namespace vantor
