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

std::string quoted(std::string_view text) {
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

} // namespace

Result<std::unique_ptr<KeyedArchiveReader>>
KeyedArchiveReader::open(std::span<const std::uint8_t> archive) {
    auto list = PropertyListCodec().read(archive);
    if (!list) {
        return Failure{list.error()};
    }
    std::unique_ptr<KeyedArchiveReader> reader(new KeyedArchiveReader(std::move(list).value()));
    if (auto tables = reader->readTables(); !tables) {
        return Failure{tables.error()};
    }
    return reader;
}

Result<Done> KeyedArchiveReader::readTables() {
    const PropertyListDictionary* file = archive_.dictionary();
    if (file == nullptr) {
        return notAnArchive("its property list is no dictionary");
    }
    const PropertyList* version = file->find(kVersionKey);
    if (version == nullptr || version->integer() == nullptr ||
        *version->integer() != kArchiveVersion) {
        return notAnArchive("its version is not " + std::to_string(kArchiveVersion));
    }
    const std::string* archiver = textUnder(*file, kArchiverKey);
    if (archiver == nullptr || *archiver != kArchiverName) {
        return notAnArchive("its archiver is not " + std::string(kArchiverName));
    }
    const PropertyList* table = file->find(kObjectTableKey);
    objects_ = table != nullptr ? table->array() : nullptr;
    if (objects_ == nullptr || objects_->empty()) {
        return notAnArchive("it has no objects");
    }
    const PropertyList* top = file->find(kTopKey);
    const PropertyList* root = top != nullptr && top->dictionary() != nullptr
                                   ? top->dictionary()->find(kRootKey)
                                   : nullptr;
    if (root == nullptr || root->uid() == nullptr || root->uid()->index >= objects_->size()) {
        return notAnArchive("it has no root object");
    }
    root_ = root->uid()->index;
    onPath_.assign(objects_->size(), false);
    classRecordOf_.assign(objects_->size(), 0);
    for (std::size_t index = 0; index < objects_->size(); ++index) {
        const PropertyListDictionary* object = (*objects_)[index].dictionary();
        const std::string* name = object != nullptr ? textUnder(*object, kClassNameKey) : nullptr;
        if (name != nullptr) {
            classRecords_.push_back({.name = *name, .plain = plainClass(*name)});
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
            return fail("the class " + quoted(record.name) + " is not allowed here");
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
    const PropertyListDictionary* object = (*objects_)[root_].dictionary();
    const ClassRecord* record = object != nullptr ? classOf(*object) : nullptr;
    if (object != nullptr && record == nullptr) {
        fail("the root object has no class");
        return nullptr;
    }
    if (record == nullptr || record->plain != PlainClass::none) {
        return decodePlainRoot(allowed);
    }
    const ObjectClass* objectClass = classFor(record->name, allowed);
    current_ = object;
    ObjectRef decoded = objectClass->decodeInstance(*this);
    current_ = nullptr;
    if (!decoded && !error_) {
        fail("the class " + quoted(objectClass->name()) + " decoded nothing");
    }
    return decoded;
}

ObjectRef KeyedArchiveReader::decodePlainRoot(std::span<const ObjectClass* const> allowed) {
    const PropertyList& object = (*objects_)[root_];
    const PlainClass kind =
        object.dictionary() != nullptr ? classOf(*object.dictionary())->plain : leafClass(object);
    const std::string_view name = plainClassName(kind);
    const ObjectClass* objectClass = name.empty() ? nullptr : classFor(name, allowed);
    if (objectClass == nullptr) {
        fail("a root object of the class " + quoted(name) + " is not allowed here");
        return nullptr;
    }
    PropertyList value;
    return readGraph(root_, 0, value) ? makePlainObject(*objectClass, std::move(value)) : nullptr;
}

bool KeyedArchiveReader::containsValue(std::string_view key) const {
    return current_ != nullptr && current_->find(escapedKey(key)) != nullptr;
}

std::optional<PropertyList> KeyedArchiveReader::decodeEncodable(std::string_view key) {
    const PropertyList* value = current_ != nullptr ? current_->find(escapedKey(key)) : nullptr;
    if (value == nullptr || value->uid() == nullptr || value->uid()->index == 0) {
        return std::nullopt;
    }
    PropertyList graph;
    if (!readGraph(value->uid()->index, 0, graph)) {
        return std::nullopt;
    }
    return graph;
}

const KeyedArchiveReader::ClassRecord*
KeyedArchiveReader::classOf(const PropertyListDictionary& object) const {
    const PropertyList* type = object.find(kClassKey);
    if (type == nullptr || type->uid() == nullptr || type->uid()->index >= objects_->size()) {
        return nullptr;
    }
    const std::uint32_t record = classRecordOf_[type->uid()->index];
    return record == 0 ? nullptr : &classRecords_[record - 1];
}

bool KeyedArchiveReader::readGraph(std::uint32_t index, std::size_t depth, PropertyList& out) {
    if (index == 0 || index >= objects_->size()) {
        return fail("a value refers to object " + std::to_string(index) + " of " +
                    std::to_string(objects_->size()));
    }
    const PropertyList& object = (*objects_)[index];
    if (const PropertyListDictionary* keyed = object.dictionary()) {
        if (onPath_[index]) {
            return fail("object " + std::to_string(index) + " contains itself");
        }
        if (depth >= kMaxDepth) {
            return fail("a value nests deeper than the limit of " + std::to_string(kMaxDepth));
        }
        // Looking for a key costs the dictionary's size, each time it is referred to.
        if (!budget_.take(1 + keyed->size(), 0)) {
            return fail("a value " + ExpansionBudget::exceeded());
        }
        onPath_[index] = true;
        const bool done = readKeyedValue(index, *keyed, depth, out);
        onPath_[index] = false;
        return done;
    }
    const std::size_t bytes = object.string() != nullptr ? object.string()->size()
                              : object.data() != nullptr ? object.data()->size()
                                                         : 0;
    if (!budget_.take(1, bytes)) {
        return fail("a value " + ExpansionBudget::exceeded());
    }
    if (leafClass(object) == PlainClass::none && object.date() == nullptr) {
        return fail("object " + std::to_string(index) + " is no value");
    }
    out = object;
    return true;
}

bool KeyedArchiveReader::readKeyedValue(std::uint32_t index, const PropertyListDictionary& object,
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
        if (const PropertyList* time = object.find(kTimeKey);
            time != nullptr && time->real() != nullptr) {
            out = PropertyList(PropertyList::Date{*time->real()});
            return true;
        }
        return fail("object " + std::to_string(index) + " is a date without a time");
    case PlainClass::string:
    case PlainClass::data: {
        // Mutable text and data carry their content under a key, directly or as a reference.
        const PropertyList* content =
            object.find(record->plain == PlainClass::string ? kStringKey : kDataKey);
        if (content != nullptr && content->uid() != nullptr &&
            content->uid()->index < objects_->size()) {
            content = &(*objects_)[content->uid()->index];
        }
        if (content == nullptr || leafClass(*content) != record->plain) {
            return fail("object " + std::to_string(index) + " lacks its content");
        }
        const std::size_t bytes =
            content->string() != nullptr ? content->string()->size() : content->data()->size();
        if (!budget_.take(0, bytes)) {
            return fail("a value " + ExpansionBudget::exceeded());
        }
        out = *content;
        return true;
    }
    case PlainClass::number:
    case PlainClass::none:
        break;
    }
    return fail("the class " + quoted(record->name) + " does not belong in a value");
}

bool KeyedArchiveReader::readElements(const PropertyListDictionary& object, std::size_t depth,
                                      PropertyList::Array& out) {
    const PropertyList* elements = object.find(kObjectsKey);
    if (elements == nullptr || elements->array() == nullptr) {
        return fail("a container lacks its elements");
    }
    // As many as there are bytes for in the archive; each is paid for as it is read.
    out.reserve(elements->array()->size());
    for (const PropertyList& element : *elements->array()) {
        if (element.uid() == nullptr) {
            return fail("an element of a container is no reference");
        }
        if (!readGraph(element.uid()->index, depth + 1, out.emplace_back())) {
            return false;
        }
    }
    return true;
}

bool KeyedArchiveReader::readDictionary(const PropertyListDictionary& object, std::size_t depth,
                                        PropertyList& out) {
    const PropertyList* keys = object.find(kKeysKey);
    PropertyList::Array values;
    if (!readElements(object, depth, values)) {
        return false;
    }
    if (keys == nullptr || keys->array() == nullptr || keys->array()->size() != values.size()) {
        return fail("a dictionary has not as many keys as values");
    }
    PropertyListDictionary dictionary;
    dictionary.reserve(values.size());
    for (std::size_t index = 0; index < values.size(); ++index) {
        const PropertyList& reference = (*keys->array())[index];
        PropertyList key;
        if (reference.uid() == nullptr || !readGraph(reference.uid()->index, depth + 1, key) ||
            key.string() == nullptr) {
            return fail("a key of a dictionary is no text");
        }
        dictionary.append(*key.string(), std::move(values[index]));
    }
    out = PropertyList(std::move(dictionary));
    return true;
}

bool KeyedArchiveReader::readOptional(const PropertyListDictionary& object, std::string_view key,
                                      std::size_t depth, std::string_view name,
                                      PropertyListDictionary& out) {
    const PropertyList* reference = object.find(key);
    if (reference == nullptr || reference->uid() == nullptr || reference->uid()->index == 0) {
        return true;
    }
    PropertyList value;
    if (!readGraph(reference->uid()->index, depth + 1, value)) {
        return false;
    }
    out.append(std::string(name), std::move(value));
    return true;
}

bool KeyedArchiveReader::readURL(const PropertyListDictionary& object, std::size_t depth,
                                 PropertyList& out) {
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

bool KeyedArchiveReader::readError(const PropertyListDictionary& object, std::size_t depth,
                                   PropertyList& out) {
    PropertyListDictionary record;
    const PropertyList* code = object.find(kErrorCode);
    if (!readOptional(object, kErrorDomain, depth, kErrorDomain, record) ||
        textUnder(record, kErrorDomain) == nullptr || code == nullptr ||
        code->integer() == nullptr) {
        return fail("an error lacks its domain or code");
    }
    record.append(std::string(kErrorCode), *code);
    if (!readOptional(object, kErrorUserInfo, depth, kErrorUserInfo, record)) {
        return false;
    }
    out = PropertyList(std::move(record));
    return true;
}

} // namespace vantor::archive
