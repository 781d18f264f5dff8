#include "platform/linux/system/xpc/bus_message.h"

#include "platform/linux/system/xpc/xpc_wire.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace vantor::xpc {

Error transportError(TransportError code, std::string message) {
    return {
        .domain = kTransportDomain, .code = static_cast<int>(code), .message = std::move(message)};
}

std::string memberOf(std::string_view selector) {
    std::string member(selector);
    std::replace(member.begin(), member.end(), ':', '_');
    return member;
}

namespace {

/// Members are compared without building a text for each row of the table.
bool isMemberOf(std::string_view member, std::string_view selector) {
    return std::equal(member.begin(), member.end(), selector.begin(), selector.end(),
                      [](char m, char s) { return m == (s == ':' ? '_' : s); });
}

} // namespace

std::optional<WallpaperOperation> wallpaperOperationOf(std::string_view member) {
    for (const auto& entry : wallpaperOperations()) {
        if (isMemberOf(member, entry.selector)) {
            return entry.operation;
        }
    }
    return std::nullopt;
}

std::optional<AgentOperation> agentOperationOf(std::string_view member) {
    for (const auto& entry : agentOperations()) {
        if (isMemberOf(member, entry.selector)) {
            return entry.operation;
        }
    }
    return std::nullopt;
}

Bus openBus(int descriptor, Side side) {
    sd_bus* made = nullptr;
    if (sd_bus_new(&made) < 0) {
        return nullptr;
    }
    Bus bus(made);
    if (sd_bus_set_fd(bus.get(), descriptor, descriptor) < 0 ||
        sd_bus_set_anonymous(bus.get(), 0) < 0 || sd_bus_negotiate_fds(bus.get(), 0) < 0) {
        return nullptr;
    }
    if (side == Side::server) {
        sd_id128_t identifier;
        if (sd_id128_randomize(&identifier) < 0 ||
            sd_bus_set_server(bus.get(), 1, identifier) < 0) {
            return nullptr;
        }
    }
    return bus;
}

Result<std::vector<std::span<const std::uint8_t>>> readArguments(sd_bus_message* message,
                                                                 int count) {
    std::string wanted;
    for (int i = 0; i < count; ++i) {
        wanted += "ay";
    }
    const char* signature = sd_bus_message_get_signature(message, 1);
    if (signature == nullptr || wanted != signature) {
        return Failure{transportError(
            TransportError::wrongSignature,
            std::string("message with the signature \"") + (signature == nullptr ? "" : signature) +
                "\" does not have the \"" + wanted + "\" of its operation")};
    }
    std::vector<std::span<const std::uint8_t>> arguments;
    std::size_t total = 0;
    for (int i = 0; i < count; ++i) {
        const void* data = nullptr;
        std::size_t size = 0;
        if (sd_bus_message_read_array(message, 'y', &data, &size) < 0) {
            return Failure{transportError(TransportError::wrongSignature,
                                          "message cannot be read to its end")};
        }
        total += size;
        arguments.emplace_back(static_cast<const std::uint8_t*>(data), size);
    }
    if (total > kMaxMessageBytes) {
        return Failure{
            transportError(TransportError::refusedArgument, "message of " + std::to_string(total) +
                                                                " bytes exceeds the limit of " +
                                                                std::to_string(kMaxMessageBytes))};
    }
    return arguments;
}

bool appendBytes(sd_bus_message* message, std::span<const std::uint8_t> bytes) {
    return sd_bus_message_append_array(message, 'y', bytes.data(), bytes.size()) >= 0;
}

void replyError(sd_bus_message* call, const Error& error) {
    sd_bus_error named{};
    sd_bus_error_set(&named, kErrorName, error.message.c_str());
    sd_bus_message* made = nullptr;
    if (sd_bus_message_new_method_error(call, &made, &named) >= 0) {
        const Message reply(made);
        if (sd_bus_message_append(reply.get(), "si", error.domain.c_str(), error.code) >= 0) {
            sd_bus_send(nullptr, reply.get(), nullptr);
        }
    }
    sd_bus_error_free(&named);
}

Error errorOf(sd_bus_message* reply) {
    const char* message = "";
    const char* domain = "";
    int code = 0;
    const char* signature = sd_bus_message_get_signature(reply, 1);
    if (sd_bus_message_is_method_error(reply, kErrorName) > 0 && signature != nullptr &&
        std::strcmp(signature, "ssi") == 0 &&
        sd_bus_message_read(reply, "ssi", &message, &domain, &code) >= 0) {
        return {.domain = domain, .code = code, .message = message};
    }
    const sd_bus_error* error = sd_bus_message_get_error(reply);
    return transportError(TransportError::disconnected,
                          error != nullptr && error->message != nullptr ? error->message
                                                                        : "the call failed");
}

bool isMethodCall(sd_bus_message* message) {
    std::uint8_t type = 0;
    return sd_bus_message_get_type(message, &type) >= 0 && type == SD_BUS_MESSAGE_METHOD_CALL;
}

std::optional<std::string_view> memberOn(sd_bus_message* call, std::string_view interface) {
    const char* named = sd_bus_message_get_interface(call);
    const char* member = sd_bus_message_get_member(call);
    if (named == nullptr || member == nullptr || interface != named) {
        return std::nullopt;
    }
    return member;
}

bool isDisconnection(sd_bus_message* message) {
    return sd_bus_message_is_signal(message, "org.freedesktop.DBus.Local", "Disconnected") > 0;
}

} // namespace vantor::xpc
