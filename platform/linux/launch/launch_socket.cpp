#include "platform/linux/launch/launch_socket.h"

#include "platform/linux/passed_descriptors.h"

namespace vantor::launch {
namespace {

bool mayCarryDescriptor(Kind kind) { return kind == Kind::connect || kind == Kind::attached; }

bool isKnown(Kind kind) {
    switch (kind) {
    case Kind::connect:
    case Kind::attach:
    case Kind::attached:
    case Kind::screens:
    case Kind::tick:
    case Kind::open:
    case Kind::links:
        return true;
    }
    return false;
}

} // namespace

LaunchSocket::LaunchSocket(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

bool LaunchSocket::send(const LaunchRecord& record, int passed) const {
    return sendPacket(descriptor_.get(), &record, sizeof(record), passed);
}

std::variant<Received, Nothing, Ended> LaunchSocket::receive() const {
    Received received{};
    Packet packet = receivePacket(descriptor_.get(), &received.record, sizeof(received.record));
    if (packet.outcome == Packet::Outcome::nothing) {
        return Nothing{};
    }
    if (packet.outcome == Packet::Outcome::ended) {
        return Ended{std::move(packet.reason)};
    }
    const LaunchRecord& record = received.record;
    if (packet.size != sizeof(record)) {
        return Ended{"a launch packet of " + std::to_string(packet.size) + " bytes is not the " +
                     std::to_string(sizeof(record)) + " of a record"};
    }
    if (!isKnown(record.kind)) {
        return Ended{"a launch record has the unknown kind " +
                     std::to_string(static_cast<std::uint32_t>(record.kind))};
    }
    if (record.screenCount > kMaxScreens) {
        return Ended{"a launch record of " + std::to_string(record.screenCount) +
                     " screens exceeds the limit of " + std::to_string(kMaxScreens)};
    }
    if (record.identifier.back() != '\0') {
        return Ended{"a launch record's identifier has no end"};
    }
    const bool wanted = mayCarryDescriptor(record.kind);
    if (packet.descriptorCount > 1 || (packet.descriptorCount == 1 && !wanted)) {
        return Ended{"a launch record carries " + std::to_string(packet.descriptorCount) +
                     " descriptors where " + (wanted ? "at most one" : "none") + " belongs"};
    }
    received.descriptor = std::move(packet.descriptor);
    return received;
}

} // namespace vantor::launch
