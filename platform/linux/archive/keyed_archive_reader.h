#pragma once
// Reads one keyed archive where its bytes lie. The table of objects and its class records are
// checked when it is opened; the graph is walked on decoding, bounded in depth and expansion.

#include "platform/keyed_archive.h"
#include "platform/linux/archive/binary_objects.h"
#include "platform/linux/archive/expansion_budget.h"
#include "platform/linux/archive/plain_class.h"

#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace vantor::archive {

/// As on the platform, the policy is raiseException until another is set. No exception crosses the
/// seam here: a decoding failure under that policy stops the process, as an uncaught one would.
class KeyedArchiveReader final : public KeyedUnarchiver, private KeyedDecoder {
  public:
    static Result<std::unique_ptr<KeyedArchiveReader>> open(Bytes archive);
    /// The bytes must outlive the reader.
    static Result<std::unique_ptr<KeyedArchiveReader>>
    openInPlace(std::span<const std::uint8_t> archive);

    /// The names of the archive's class records, plain ones left out.
    std::vector<std::string> objectClassNames() const;

    void setDecodingFailurePolicy(DecodingFailurePolicy policy) override { policy_ = policy; }
    void setClass(const ObjectClass& objectClass, std::string_view archivedName) override;
    ObjectRef decodeRootObject(std::span<const ObjectClass* const> allowed) override;
    std::optional<Error> error() const override { return error_; }
    void finishDecoding() override { finished_ = true; }

  private:
    struct ClassRecord {
        std::string name;
        PlainClass plain;
    };

    using Container = BinaryObjects::Container;
    using Reference = BinaryObjects::Reference;

    KeyedArchiveReader(BinaryObjects objects, Bytes bytes)
        : bytes_(std::move(bytes)), objects_(objects) {}
    static Result<std::unique_ptr<KeyedArchiveReader>> open(std::span<const std::uint8_t> archive,
                                                            Bytes owned);

    // Opening.
    Result<Done> readTables();
    Result<Done> readClassRecords();

    // For an object's own decoding.
    bool containsValue(std::string_view key) const override;
    std::optional<PropertyList> decodeEncodable(std::string_view key) override;
    void failWithError(Error error) override;

    bool fail(std::string why);
    const ObjectClass* classFor(std::string_view archivedName,
                                std::span<const ObjectClass* const> allowed) const;
    bool checkClasses(std::span<const ObjectClass* const> allowed);
    ObjectRef decodePlainRoot(std::span<const ObjectClass* const> allowed);
    /// The object that "$objects" has at an index which is below its count.
    Reference at(std::uint32_t index) const { return objects_.element(table_, index); }
    /// The object that an archive reference under the key leads to; nothing when there is none, or
    /// it is a reference to nothing.
    std::optional<std::uint32_t> indexUnder(const Container& object, std::string_view key) const;
    /// The class record that an object's dictionary names, or null.
    const ClassRecord* classOf(const Container& object) const;

    bool readGraph(std::uint32_t index, std::size_t depth, PropertyList& out);
    bool readLeaf(std::uint32_t index, Reference object, PropertyList& out);
    bool readKeyedValue(std::uint32_t index, const Container& object, std::size_t depth,
                        PropertyList& out);
    bool readDate(std::uint32_t index, const Container& object, PropertyList& out);
    bool readContent(std::uint32_t index, const Container& object, PlainClass kind,
                     PropertyList& out);
    /// The array of references under the key; nothing when there is none.
    std::optional<Container> references(const Container& object, std::string_view key) const;
    bool readElements(const Container& object, std::size_t depth, PropertyList::Array& out);
    bool readDictionary(const Container& object, std::size_t depth, PropertyList& out);
    bool readURL(const Container& object, std::size_t depth, PropertyList& out);
    bool readError(const Container& object, std::size_t depth, PropertyList& out);
    bool readOptional(const Container& object, std::string_view key, std::size_t depth,
                      std::string_view name, PropertyListDictionary& out);

    /// What objects_ borrows, unless it is another's.
    const Bytes bytes_;
    const BinaryObjects objects_;
    /// "$objects".
    Container table_;
    std::uint32_t root_ = 0;
    std::vector<ClassRecord> classRecords_;
    /// By the index of an object, 1 + the index of the class record it is; 0 for other objects.
    std::vector<std::uint32_t> classRecordOf_;
    std::vector<std::pair<std::string, const ObjectClass*>> mapped_;
    DecodingFailurePolicy policy_ = DecodingFailurePolicy::raiseException;
    /// The object that is decoding itself.
    std::optional<Container> current_;
    /// The containers that are being read, to tell a cycle from mere depth.
    std::vector<bool> onPath_;
    ExpansionBudget budget_;
    std::optional<Error> error_;
    bool finished_ = false;
};

} // namespace vantor::archive
