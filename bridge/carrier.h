#pragma once
// Making instances of the agent's classes without calling any of their initialisers: a carrier is
// archived with the payload under a key, and the archive is read back with the carrier's class name
// mapped to the agent's class, which then decodes itself. Free of shared state; any thread.

#include "bridge/keyed_record.h"
#include "platform/keyed_archive.h"
#include "platform/object_runtime.h"

#include <functional>
#include <string_view>

namespace vantor {
class Platform;
}

namespace vantor::PrivateBridge {

/// The object that stands in an archive where an instance of the agent's class will be read. It
/// exists only with a body to encode and is never decoded as itself.
class Carrier {
  public:
    using EncodeBody = std::function<Result<Done>(KeyedEncoder&)>;

    /// What carriers are archived as.
    static constexpr std::string_view kClassName = "VantorXPCCarrier";

    Carrier() = delete;
    explicit Carrier(EncodeBody encodeBody) : encodeBody_(std::move(encodeBody)) {}

    /// Writes the body's keys; a failure is logged and leaves what was written before it.
    void encode(KeyedEncoder& encoder) const;

  private:
    const EncodeBody encodeBody_;
};

/// An instance of the agent's class of that name, decoded from `payload` under `key` (by convention
/// the payload's type name). Null, with a line in the log, when it cannot be made; a payload that
/// could not be encoded is left out of the archive, and the agent's class decides.
ObjectRef makeApple(Platform& platform, std::string_view className, std::string_view key,
                    const Result<PropertyList>& payload);
ObjectRef makeApple(Platform& platform, std::string_view className, std::string_view key,
                    const PropertyList& payload);
template <KeyedRecord Record>
ObjectRef makeApple(Platform& platform, std::string_view className, std::string_view key,
                    const Record& payload) {
    return makeApple(platform, className, key, encodeRecord(payload));
}

} // namespace vantor::PrivateBridge
