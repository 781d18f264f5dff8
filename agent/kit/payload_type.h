#pragma once
// What the payloads of the agent's classes consist of, described once: checking a decoded payload
// and showing it to a reflection both follow from the description.
//
// How each kind is encoded (the platform's own encoding of records):
//   record       dictionary, one key a field; an absent optional field has no key
//   enumeration  dictionary with the case's name as its one key, and as its value the dictionary of
//                the case's payload, empty without one
//   list         array                  boolean, integer, real, text, data  as themselves
//   uint32       integer                uuid  its text
//   size         array of two reals     url   dictionary with the key "relative", the absolute text

#include "platform/object_runtime.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vantor::agent {

enum class PayloadKind {
    boolean,
    integer,
    uint32,
    real,
    text,
    data,
    uuid,
    size,
    url,
    list,
    record,
    enumeration
};

struct PayloadField;

/// Types form no cycle.
struct PayloadType {
    PayloadKind kind;
    std::string_view name;
    /// A record's fields in order, or an enumeration's cases: a case's type is the record of its
    /// payload.
    std::span<const PayloadField> fields = {};
    /// What a list's elements are.
    const PayloadType* element = nullptr;
};

enum class Presence { required, optional };

struct PayloadField {
    std::string_view name;
    const PayloadType& type;
    Presence presence = Presence::required;
};

/// Where `payload` does not fit `type`, as a sentence; nothing when it fits. Keys that a record
/// does not have are let be.
std::optional<std::string> mismatch(const PayloadType& type, const PropertyList& payload);

/// `payload` fits `type`. The view shares it.
ReflectedRef reflectPayload(const PayloadType& type, std::shared_ptr<const PropertyList> payload);

} // namespace vantor::agent
