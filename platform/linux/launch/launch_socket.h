#pragma once
// One end of the launch socket: whole records with at most one descriptor, in both directions.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/launch/launch_wire.h"
#include "platform/result.h"

#include <optional>
#include <string>
#include <variant>

namespace vantor::launch {

struct Received {
    LaunchRecord record;
    /// Present or not as the record's kind says; checked for kinds that never carry one.
    FileDescriptor descriptor;
};

/// The peer is gone, or its packets are broken and the reason is worth a line.
struct Ended {
    std::string reason;
};

/// Nothing to read now.
struct Nothing {};

class LaunchSocket {
  public:
    /// Takes a connected SOCK_SEQPACKET socket. Neither sending nor receiving ever blocks.
    explicit LaunchSocket(FileDescriptor descriptor);

    int descriptor() const { return descriptor_.get(); }

    /// False when the peer is gone or does not keep up (it may then as well be gone).
    [[nodiscard]] bool send(const LaunchRecord& record, int passed = -1) const;

    std::variant<Received, Nothing, Ended> receive() const;

  private:
    FileDescriptor descriptor_;
};

} // namespace vantor::launch
