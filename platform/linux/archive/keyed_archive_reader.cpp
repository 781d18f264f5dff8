#include "platform/linux/archive/keyed_archive_reader.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/archive_keys.h"
#include "platform/linux/archive/plain_object.h"
#include "platform/linux/archive/property_list_codec.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace vantor::archive {
namespace {

Failure<Error> notAnArchive(const std::string& why) {
    return Failure{cocoaError(kCoderReadCorrupt, "not a keyed archive: " + why)};
}

std::string inQuotes(std::string_view text) {
    constexpr std::size_t kShown = 80;
    return "\"" + std::string(text.substr(0, kShown)) + (text.size() > kShown ? "…" : "") + "\"";
}

const std::string* textUnder(const PropertyListDictionary& dictionary, std::string_view key) {
    const PropertyList* value = dictionary.find(key);
    return value != nullptr ? value->string() : nullptr;
}

/// The kind of a value that stands in "$objects" as itself.
PlainClass leafClass(const PropertyList& leaf) {
    if (leaf.string() != nullptr) {
        return PlainClass::string;
    }
    if (leaf.data() != nullptr) {
        return PlainClass::data;
    }
    double ignored = 0;
    return leaf.numberAsDouble(ignored) ? PlainClass::number : PlainClass::none;
}

bool isVersion(const BinaryObjects& objects, BinaryObjects::Reference object) {
    ExpansionBudget budget;
    PropertyList value;
    std::string ignored;
    return objects.readLeaf(object, budget, value, ignored) == BinaryObjects::Reading::done &&
           value == PropertyList(kArchiveVersion);
}

} // namespace

Result<std::unique_ptr<KeyedArchiveReader>> KeyedArchiveReader::open(Bytes archive) {
    const std::span<const std::uint8_t> bytes(archive);
    return open(bytes, std::move(archive));
}

Result<std::unique_ptr<KeyedArchiveReader>>
KeyedArchiveReader::openInPlace(std::span<const std::uint8_t> archive) {
    return open(archive, {});
}

/// `archive` is what `owned` holds, unless that is empty.
Result<std::unique_ptr<KeyedArchiveReader>>
KeyedArchiveReader::open(std::span<const std::uint8_t> archive, Bytes owned) {
    if (!PropertyListCodec::isBinary(archive) || archive.size() > kMaxEncodedBytes) {
        auto list = PropertyListCodec().read(archive);
        if (!list) {
            return Failure{list.error()};
        }
        owned = PropertyListCodec().writeBinary(list.value());
        archive = owned;
    }
    auto objects = BinaryObjects::open(archive);
    if (!objects) {
        return Failure{
            cocoaError(kPropertyListReadCorrupt, "binary property list " + objects.error())};
    }
    std::unique_ptr<KeyedArchiveReader> reader(
        new KeyedArchiveReader(objects.value(), std::move(owned)));
    if (auto tables = reader->readTables(); !tables) {
        return Failure{tables.error()};
    }
    return reader;
}

Result<Done> KeyedArchiveReader::readTables() {
    const auto file = objects_.container(objects_.top());
    if (!file || !file->isDictionary) {
        return notAnArchive("its property list is no dictionary");
    }
    const auto version = objects_.find(*file, kVersionKey);
    if (!version || !isVersion(objects_, *version)) {
        return notAnArchive("its version is not " + std::to_string(kArchiveVersion));
    }
    const auto archiver = objects_.find(*file, kArchiverKey);
    if (!archiver || !objects_.isText(*archiver, kArchiverName)) {
        return notAnArchive("its archiver is not " + std::string(kArchiverName));
    }
    const auto table = references(*file, kObjectTableKey);
    if (!table || table->count == 0) {
        return notAnArchive("it has no objects");
    }
    if (table->count > kMaxObjects) {
        return notAnArchive("its " + std::to_string(table->count) +
                            " objects exceed the limit of " + std::to_string(kMaxObjects));
    }
    table_ = *table;
    const auto topReference = objects_.find(*file, kTopKey);
    const auto top = topReference ? objects_.container(*topReference) : std::nullopt;
    const auto rootReference = top ? objects_.find(*top, kRootKey) : std::nullopt;
    const auto root = rootReference ? objects_.uid(*rootReference) : std::nullopt;
    if (!root || *root >= table_.count) {
        return notAnArchive("it has no root object");
    }
    root_ = *root;
    onPath_.assign(table_.count, false);
    return readClassRecords();
}

Result<Done> KeyedArchiveReader::readClassRecords() {
    classRecordOf_.assign(table_.count, 0);
    // Of its own: a wide dictionary that stands in the table over and over costs its size each
    // time.
    ExpansionBudget budget;
    std::string why;
    for (std::uint32_t index = 0; index < table_.count; ++index) {
        const auto object = objects_.container(at(index));
        if (!budget.take(1 + (object ? object->count : 0), 0)) {
            return notAnArchive("its table " + ExpansionBudget::exceeded());
        }
        const auto reference = object ? objects_.find(*object, kClassNameKey) : std::nullopt;
        std::string name;
        if (reference &&
            objects_.readText(*reference, budget, name, why) == BinaryObjects::Reading::done) {
            const PlainClass plain = plainClass(name);
            classRecords_.push_back({.name = std::move(name), .plain = plain});
            classRecordOf_[index] = static_cast<std::uint32_t>(classRecords_.size());
        }
    }
    return Done{};
}

std::vector<std::string> KeyedArchiveReader::objectClassNames() const {
    std::vector<std::string> names;
    for (const ClassRecord& record : classRecords_) {
        if (record.plain == PlainClass::none) {
            names.push_back(record.name);
        }
    }
    return names;
}

void KeyedArchiveReader::setClass(const ObjectClass& objectClass, std::string_view archivedName) {
    mapped_.emplace_back(archivedName, &objectClass);
}

bool KeyedArchiveReader::fail(std::string why) {
    failWithError(cocoaError(kCoderReadCorrupt, std::move(why)));
    return false;
}

void KeyedArchiveReader::failWithError(Error error) {
    if (policy_ == DecodingFailurePolicy::raiseException) {
        std::fprintf(stderr, "uncaught decoding failure: %s\n", error.message.c_str());
        std::abort();
    }
    if (!error_) {
        error_ = std::move(error);
    }
}

const ObjectClass* KeyedArchiveReader::classFor(std::string_view archivedName,
                                                std::span<const ObjectClass* const> allowed) const {
    for (const auto& [name, objectClass] : mapped_) {
        if (name == archivedName) {
            const bool isAllowed =
                std::find(allowed.begin(), allowed.end(), objectClass) != allowed.end();
            return isAllowed ? objectClass : nullptr;
        }
    }
    const auto it =
        std::find_if(allowed.begin(), allowed.end(), [archivedName](const ObjectClass* candidate) {
            return candidate->name() == archivedName;
        });
    return it == allowed.end() ? nullptr : *it;
}

bool KeyedArchiveReader::checkClasses(std::span<const ObjectClass* const> allowed) {
    for (const ClassRecord& record : classRecords_) {
        if (record.plain == PlainClass::none && classFor(record.name, allowed) == nullptr) {
            return fail("the class " + inQuotes(record.name) + " is not allowed here");
        }
    }
    return true;
}

ObjectRef KeyedArchiveReader::decodeRootObject(std::span<const ObjectClass* const> allowed) {
    if (finished_) {
        fail("decoding has been finished");
        return nullptr;
    }
    if (root_ == 0) {
        fail("the root object is nothing");
        return nullptr;
    }
    if (!checkClasses(allowed)) {
        return nullptr;
    }
    const auto object = objects_.container(at(root_));
    const ClassRecord* record = object ? classOf(*object) : nullptr;
    if (object && record == nullptr) {
        fail("the root object has no class");
        return nullptr;
    }
    if (record == nullptr || record->plain != PlainClass::none) {
        return decodePlainRoot(allowed);
    }
    const ObjectClass* objectClass = classFor(record->name, allowed);
    current_ = object;
    ObjectRef decoded = objectClass->decodeInstance(*this);
    current_.reset();
    if (!decoded && !error_) {
        fail("the class " + inQuotes(objectClass->name()) + " decoded nothing");
    }
    return decoded;
}

ObjectRef KeyedArchiveReader::decodePlainRoot(std::span<const ObjectClass* const> allowed) {
    PropertyList value;
    const auto object = objects_.container(at(root_));
    if (!object && !readGraph(root_, 0, value)) {
        return nullptr;
    }
    const PlainClass kind = object ? classOf(*object)->plain : leafClass(value);
    const std::string_view name = plainClassName(kind);
    const ObjectClass* objectClass = name.empty() ? nullptr : classFor(name, allowed);
    if (objectClass == nullptr) {
        fail("a root object of the class " + inQuotes(name) + " is not allowed here");
        return nullptr;
    }
    if (object && !readGraph(root_, 0, value)) {
        return nullptr;
    }
    return makePlainObject(*objectClass, std::move(value));
}

bool KeyedArchiveReader::containsValue(std::string_view key) const {
    return current_ && objects_.find(*current_, escapedKey(key));
}

std::optional<PropertyList> KeyedArchiveReader::decodeEncodable(std::string_view key) {
    const auto index = current_ ? indexUnder(*current_, escapedKey(key)) : std::nullopt;
    if (!index) {
        return std::nullopt;
    }
    PropertyList graph;
    if (!readGraph(*index, 0, graph)) {
        return std::nullopt;
    }
    return graph;
}

std::optional<std::uint32_t> KeyedArchiveReader::indexUnder(const Container& object,
                                                            std::string_view key) const {
    const auto reference = objects_.find(object, key);
    const auto index = reference ? objects_.uid(*reference) : std::nullopt;
    return index && *index != 0 ? index : std::nullopt;
}

const KeyedArchiveReader::ClassRecord* KeyedArchiveReader::classOf(const Container& object) const {
    const auto type = indexUnder(object, kClassKey);
    if (!type || *type >= table_.count) {
        return nullptr;
    }
    const std::uint32_t record = classRecordOf_[*type];
    return record == 0 ? nullptr : &classRecords_[record - 1];
}

bool KeyedArchiveReader::readGraph(std::uint32_t index, std::size_t depth, PropertyList& out) {
    if (index == 0 || index >= table_.count) {
        return fail("a value refers to object " + std::to_string(index) + " of " +
                    std::to_string(table_.count));
    }
    const auto keyed = objects_.container(at(index));
    if (!keyed || !keyed->isDictionary) {
        return readLeaf(index, at(index), out);
    }
    if (onPath_[index]) {
        return fail("object " + std::to_string(index) + " contains itself");
    }
    if (depth >= kMaxDepth) {
        return fail("a value nests deeper than the limit of " + std::to_string(kMaxDepth));
    }
    // Looking for a key costs the dictionary's size, each time it is referred to.
    if (!budget_.take(1 + keyed->count, 0)) {
        return fail("a value " + ExpansionBudget::exceeded());
    }
    onPath_[index] = true;
    const bool done = readKeyedValue(index, *keyed, depth, out);
    onPath_[index] = false;
    return done;
}

/// `index` is for the complaint.
bool KeyedArchiveReader::readLeaf(std::uint32_t index, Reference object, PropertyList& out) {
    std::string why;
    const auto read = budget_.take(1, 0) ? objects_.readLeaf(object, budget_, out, why)
                                         : BinaryObjects::Reading::exceeded;
    switch (read) {
    case BinaryObjects::Reading::exceeded:
        return fail("a value " + ExpansionBudget::exceeded());
    case BinaryObjects::Reading::malformed:
        return fail("object " + std::to_string(index) + " is no value: " + why);
    case BinaryObjects::Reading::done:
        break;
    }
    return out.uid() == nullptr || fail("object " + std::to_string(index) + " is no value");
}

bool KeyedArchiveReader::readKeyedValue(std::uint32_t index, const Container& object,
                                        std::size_t depth, PropertyList& out) {
    const ClassRecord* record = classOf(object);
    if (record == nullptr) {
        return fail("object " + std::to_string(index) + " has no class");
    }
    switch (record->plain) {
    case PlainClass::array: {
        PropertyList::Array elements;
        const bool done = readElements(object, depth, elements);
        out = PropertyList(std::move(elements));
        return done;
    }
    case PlainClass::dictionary:
        return readDictionary(object, depth, out);
    case PlainClass::url:
        return readURL(object, depth, out);
    case PlainClass::error:
        return readError(object, depth, out);
    case PlainClass::date:
        return readDate(index, object, out);
    case PlainClass::string:
    case PlainClass::data:
        return readContent(index, object, record->plain, out);
    case PlainClass::number:
    case PlainClass::none:
        break;
    }
    return fail("the class " + inQuotes(record->name) + " does not belong in a value");
}

bool KeyedArchiveReader::readDate(std::uint32_t index, const Container& object, PropertyList& out) {
    const auto time = objects_.find(object, kTimeKey);
    PropertyList seconds;
    if (!time || !readLeaf(index, *time, seconds) || seconds.real() == nullptr) {
        return fail("object " + std::to_string(index) + " is a date without a time");
    }
    out = PropertyList(PropertyList::Date{*seconds.real()});
    return true;
}

/// Mutable text and data carry their content under a key, directly or as a reference.
bool KeyedArchiveReader::readContent(std::uint32_t index, const Container& object, PlainClass kind,
                                     PropertyList& out) {
    auto content = objects_.find(object, kind == PlainClass::string ? kStringKey : kDataKey);
    if (const auto referred = content ? objects_.uid(*content) : std::nullopt;
        referred && *referred < table_.count) {
        content = at(*referred);
    }
    if (!content || objects_.isContainer(*content) || !readLeaf(index, *content, out) ||
        leafClass(out) != kind) {
        return fail("object " + std::to_string(index) + " lacks its content");
    }
    return true;
}

std::optional<BinaryObjects::Container> KeyedArchiveReader::references(const Container& object,
                                                                       std::string_view key) const {
    const auto reference = objects_.find(object, key);
    auto container = reference ? objects_.container(*reference) : std::nullopt;
    return container && !container->isDictionary ? container : std::nullopt;
}

bool KeyedArchiveReader::readElements(const Container& object, std::size_t depth,
                                      PropertyList::Array& out) {
    const auto elements = references(object, kObjectsKey);
    if (!elements) {
        return fail("a container lacks its elements");
    }
    // Each will be paid for as it is read; room is made only for what can be.
    if (elements->count > budget_.values()) {
        return fail("a value " + ExpansionBudget::exceeded());
    }
    out.reserve(elements->count);
    for (std::size_t index = 0; index < elements->count; ++index) {
        const auto element = objects_.uid(objects_.element(*elements, index));
        if (!element) {
            return fail("an element of a container is no reference");
        }
        if (!readGraph(*element, depth + 1, out.emplace_back(false))) {
            return false;
        }
    }
    return true;
}

bool KeyedArchiveReader::readDictionary(const Container& object, std::size_t depth,
                                        PropertyList& out) {
    const auto keys = references(object, kKeysKey);
    PropertyList::Array values;
    if (!readElements(object, depth, values)) {
        return false;
    }
    if (!keys || keys->count != values.size()) {
        return fail("a dictionary has not as many keys as values");
    }
    PropertyListDictionary dictionary;
    dictionary.reserve(values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
        const auto reference = objects_.uid(objects_.element(*keys, index));
        PropertyList key(false);
        if (!reference || !readGraph(*reference, depth + 1, key) || key.string() == nullptr) {
            return fail("a key of a dictionary is no text");
        }
        dictionary.append(std::move(*key.string()), std::move(values[index]));
    }
    out = PropertyList(std::move(dictionary));
    return true;
}

bool KeyedArchiveReader::readOptional(const Container& object, std::string_view key,
                                      std::size_t depth, std::string_view name,
                                      PropertyListDictionary& out) {
    const auto index = indexUnder(object, key);
    return !index ||
           readGraph(*index, depth + 1, out.append(std::string(name), PropertyList(false)));
}

bool KeyedArchiveReader::readURL(const Container& object, std::size_t depth, PropertyList& out) {
    PropertyListDictionary url;
    if (!readOptional(object, kRelativeKey, depth, kURLRelative, url) ||
        !readOptional(object, kBaseKey, depth, kURLBase, url)) {
        return false;
    }
    if (textUnder(url, kURLRelative) == nullptr) {
        return fail("a URL lacks its text");
    }
    out = PropertyList(std::move(url));
    return true;
}

bool KeyedArchiveReader::readError(const Container& object, std::size_t depth, PropertyList& out) {
    PropertyListDictionary record;
    const auto codeReference = objects_.find(object, kErrorCode);
    PropertyList code;
    if (!readOptional(object, kErrorDomain, depth, kErrorDomain, record) ||
        textUnder(record, kErrorDomain) == nullptr || !codeReference ||
        !readLeaf(0, *codeReference, code) || code.integer() == nullptr) {
        return fail("an error lacks its domain or code");
    }
    record.append(std::string(kErrorCode), std::move(code));
    if (!readOptional(object, kErrorUserInfo, depth, kErrorUserInfo, record)) {
        return false;
    }
    out = PropertyList(std::move(record));
    return true;
}

} // namespace vantor::archive
