#pragma once
// One end of a hosted context's socket: whole records with the descriptor that their kind says.

#include "platform/linux/file_descriptor.h"
#include "platform/linux/layers/layer_wire.h"

#include <cstring>
#include <string>
#include <type_traits>
#include <variant>

namespace vantor::layerwire {

/// A received record, checked for size and descriptors; its fields are not.
struct Received {
    alignas(TreeRecord) std::array<std::byte, sizeof(TreeRecord)> bytes;
    FileDescriptor descriptor;

    Kind kind() const { return as<Header>().kind; }
    /// The record, or the front of it.
    template <typename Record>
    Record as() const {
        static_assert(std::is_trivially_copyable_v<Record> && sizeof(Record) <= sizeof(bytes));
        Record record;
        std::memcpy(&record, bytes.data(), sizeof(record));
        return record;
    }
};
struct Nothing {};
struct Ended {
    std::string reason;
};

class RecordSocket {
  public:
    /// Takes a connected SOCK_SEQPACKET socket.
    explicit RecordSocket(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}

    int descriptor() const { return descriptor_.get(); }

    /// False when the peer is gone or does not keep up. Allocates nothing.
    template <typename Record>
    [[nodiscard]] bool send(const Record& record, int passed = -1) const {
        return sendBytes(&record, sizeof(record), passed);
    }

    /// Never blocks.
    std::variant<Received, Nothing, Ended> receive() const;

  private:
    bool sendBytes(const void* bytes, std::size_t size, int passed) const;

    FileDescriptor descriptor_;
};

} // namespace vantor::layerwire
