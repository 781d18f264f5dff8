#include "tests/support/raw_bus.h"

#include "platform/linux/system/xpc/xpc_wire.h"

#include <cstring>
#include <unistd.h>
#include <utility>

namespace vantor::rawbus {
namespace {

constexpr std::size_t kFixedHeader = 16;

enum Field : std::uint8_t { path = 1, interface = 2, member = 3, replySerial = 5, signature = 8 };

class Writer {
  public:
    void byte(std::uint8_t value) { bytes.push_back(value); }
    void align(std::size_t to) { bytes.resize((bytes.size() + to - 1) / to * to); }
    void number(std::uint32_t value) {
        align(4);
        for (int shift = 0; shift < 32; shift += 8) {
            byte(static_cast<std::uint8_t>(value >> shift));
        }
    }
    void text(const std::string& value) {
        number(static_cast<std::uint32_t>(value.size()));
        raw(value);
        byte(0);
    }
    void field(Field code, char type, const std::string& value) {
        align(8);
        byte(code);
        byte(1);
        byte(static_cast<std::uint8_t>(type));
        byte(0);
        if (type == 'g') {
            byte(static_cast<std::uint8_t>(value.size()));
            raw(value);
            byte(0);
        } else {
            text(value);
        }
    }
    void setNumber(std::size_t at, std::uint32_t value) {
        for (std::size_t i = 0; i < 4; ++i) {
            bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
    }

    Bytes bytes;

  private:
    void raw(const std::string& value) { bytes.insert(bytes.end(), value.begin(), value.end()); }
};

std::uint32_t numberAt(std::span<const std::uint8_t> bytes, std::size_t at) {
    std::uint32_t value = 0;
    std::memcpy(&value, bytes.data() + at, sizeof(value));
    return value;
}

/// The value of the one numeric field that matters here.
std::uint32_t replySerialOf(std::span<const std::uint8_t> fields) {
    std::size_t at = 0;
    while (at + 8 <= fields.size()) {
        const std::uint8_t code = fields[at];
        const char type = static_cast<char>(fields[at + 2]);
        at += 4;
        if (type == 'u') {
            if (code == Field::replySerial) {
                return numberAt(fields, at);
            }
            at += 4;
        } else if (type == 'g') {
            at += std::size_t{2} + fields[at];
        } else {
            at += std::size_t{5} + numberAt(fields, at);
        }
        at = (at + 7) / 8 * 8;
    }
    return 0;
}

} // namespace

Bytes authentication() {
    std::string identity;
    for (const char digit : std::to_string(geteuid())) {
        identity += "3" + std::string(1, digit);
    }
    const std::string lines = "AUTH EXTERNAL " + identity + "\r\nBEGIN\r\n";
    Bytes bytes{0};
    bytes.insert(bytes.end(), lines.begin(), lines.end());
    return bytes;
}

Bytes marshal(const MethodCall& call) {
    Writer body;
    std::string signature;
    for (const Bytes& argument : call.arguments) {
        body.number(static_cast<std::uint32_t>(argument.size()));
        body.bytes.insert(body.bytes.end(), argument.begin(), argument.end());
        signature += "ay";
    }
    signature = call.signature.value_or(signature);

    Writer message;
    message.byte('l');
    message.byte(static_cast<std::uint8_t>(MessageType::methodCall));
    message.byte(0);
    message.byte(1);
    message.number(static_cast<std::uint32_t>(body.bytes.size()));
    message.number(call.serial);
    message.number(0);
    message.field(Field::path, 'o', xpc::kObjectPath);
    message.field(Field::interface, 's', call.interface);
    message.field(Field::member, 's', call.member);
    if (!signature.empty()) {
        message.field(Field::signature, 'g', signature);
    }
    message.setNumber(12, static_cast<std::uint32_t>(message.bytes.size() - kFixedHeader));
    message.align(8);
    message.bytes.insert(message.bytes.end(), body.bytes.begin(), body.bytes.end());
    return message.bytes;
}

std::optional<std::pair<Message, std::size_t>> unmarshal(std::span<const std::uint8_t> stream) {
    if (stream.size() < kFixedHeader) {
        return std::nullopt;
    }
    const std::size_t bodySize = numberAt(stream, 4);
    const std::size_t fieldsSize = numberAt(stream, 12);
    const std::size_t bodyStart = (kFixedHeader + fieldsSize + 7) / 8 * 8;
    if (stream.size() < bodyStart + bodySize) {
        return std::nullopt;
    }
    const auto body = stream.subspan(bodyStart, bodySize);
    return std::pair(Message{.type = static_cast<MessageType>(stream[1]),
                             .replySerial = replySerialOf(stream.subspan(kFixedHeader, fieldsSize)),
                             .body = Bytes(body.begin(), body.end())},
                     bodyStart + bodySize);
}

} // namespace vantor::rawbus
