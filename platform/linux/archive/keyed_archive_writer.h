#pragma once
// Builds one keyed archive: the table "$objects" of values that refer to each other by number, as
// NSKeyedArchiver's published output has it. Equal plain values that are no containers are one
// entry.

#include "platform/keyed_archive.h"
#include "platform/linux/archive/binary_property_list_writer.h"
#include "platform/linux/archive/plain_class.h"

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantor::archive {

/// Whether a keyed archive can hold this graph: no archive references, not too deep.
Result<Done> checkGraph(const PropertyList& graph);

class KeyedArchiveWriter final : public KeyedEncoder {
  public:
    KeyedArchiveWriter();

    /// A key may be written once.
    Result<Done> encodeEncodable(const PropertyList& graph, std::string_view key) override;

    /// The archive whose root is an object of that class with the keys encoded so far.
    Bytes finishObject(std::string_view className);
    /// The archive whose root is a plain value. `graph` has passed checkGraph and has the shape
    /// that its class has in plain_object.h.
    Bytes finishPlain(PlainClass kind, const PropertyList& graph);

  private:
    using Reference = BinaryPropertyListWriter::Reference;
    using Sharing = BinaryPropertyListWriter::Sharing;
    using Index = std::uint32_t;

    Index reserve();
    Index addLeaf(Reference leaf);
    Index addText(std::string_view text);
    Index addGraph(const PropertyList& graph);
    Index addKeyed(std::string_view className,
                   std::initializer_list<std::pair<std::string_view, Reference>> keys);
    Index addPlain(PlainClass kind, const PropertyList& graph);
    Index addOptional(const PropertyListDictionary& record, std::string_view key);
    Index classIndex(std::string_view className);
    /// The reference to one of the archive's own words, kept in `known` after the first time.
    Reference word(Reference& known, std::string_view text);
    Reference indexArray(std::size_t from, Sharing sharing);
    Bytes finish(Index root);

    BinaryPropertyListWriter writer_;
    // Known words; 0 is none, since that is "$null".
    Reference classKey_ = 0;
    Reference keysKey_ = 0;
    Reference objectsKey_ = 0;
    /// "$objects".
    std::vector<Reference> objects_;
    /// By a leaf's reference the index it has in "$objects"; 0 is none.
    std::vector<Index> leafIndices_;
    std::vector<std::pair<std::string, Index>> classes_;
    /// UIDs of elements of containers that are being built, innermost last.
    std::vector<Reference> stack_;
    std::vector<Reference> rootKeys_;
    std::vector<Reference> rootValues_;
};

} // namespace vantor::archive
