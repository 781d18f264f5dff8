#pragma once
// Keyed archives ($version 100000): how the agent's objects travel.
//   Linux: own bounded reader and writer of the published format.
//   macOS: NSKeyedArchiver and NSKeyedUnarchiver.

#include "platform/object_runtime.h"
#include "platform/property_list.h"
#include "platform/result.h"

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantor {

/// Writes one object's keys. Valid only during the call that hands it out.
class KeyedEncoder {
  public:
    virtual ~KeyedEncoder() = default;

    /// Archives a record that was turned into a property-list graph (dictionaries, arrays,
    /// strings, numbers, data) under `key`, as the platform's keyed encoding of records does.
    /// Fails on values that such a graph cannot hold (dates are allowed, archive references not).
    virtual Result<Done> encodeEncodable(const PropertyList& graph, std::string_view key) = 0;
};

/// Reads one object's keys. Valid only during the call that hands it out.
class KeyedDecoder {
  public:
    virtual ~KeyedDecoder() = default;

    virtual bool containsValue(std::string_view key) const = 0;

    /// The graph archived under `key`, dictionaries and arrays resolved; nothing when the key is
    /// missing or holds something else. Bounded in depth and expansion; a violated bound or a
    /// class outside the allow-list also sets the unarchiver's error.
    virtual std::optional<PropertyList> decodeEncodable(std::string_view key) = 0;

    /// Makes decoding fail; the first failure stays.
    virtual void failWithError(Error error) = 0;
};

/// What happens when decoding fails; an unarchiver raises until it is told otherwise. No exception
/// crosses the seam on Linux, where a raised failure stops the process as an uncaught one would:
/// set the other policy before decoding what a peer sent. The numeric values are the platform's.
enum class DecodingFailurePolicy { raiseException = 0, setErrorAndReturn = 1 };

/// Reads one archive. Used on one thread.
class KeyedUnarchiver {
  public:
    virtual ~KeyedUnarchiver() = default;

    virtual void setDecodingFailurePolicy(DecodingFailurePolicy policy) = 0;
    /// Objects archived as `archivedName` are decoded by `objectClass`.
    virtual void setClass(const ObjectClass& objectClass, std::string_view archivedName) = 0;
    /// Decodes the root object. Every class met in the archive must be in `allowed`, after
    /// mapping; plain containers, strings, numbers, data and URLs inside a record's graph are
    /// always allowed. Null when it cannot be decoded.
    virtual ObjectRef decodeRootObject(std::span<const ObjectClass* const> allowed) = 0;
    /// The first failure, if any.
    virtual std::optional<Error> error() const = 0;
    virtual void finishDecoding() = 0;
};

/// Free of state; any thread.
class KeyedArchiving {
  public:
    virtual ~KeyedArchiving() = default;

    /// An archive whose root object is archived under `className`; `encode` writes its keys.
    /// The archive is completed with whatever `encode` wrote.
    virtual Result<Bytes> archiveRootObject(std::string_view className,
                                            const std::function<void(KeyedEncoder&)>& encode) = 0;

    /// Opens an archive. The bytes may come from anywhere; what is no keyed archive, or exceeds
    /// the bounds of property lists, is an error.
    virtual Result<std::unique_ptr<KeyedUnarchiver>>
    unarchiver(std::span<const std::uint8_t> archive) = 0;
};

} // namespace vantor
