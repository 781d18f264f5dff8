#include "platform/linux/archive/keyed_archive_writer.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/archive_keys.h"
#include "platform/linux/archive/limits.h"

#include <algorithm>
#include <array>

namespace vantor::archive {
namespace {

/// Each container of a graph is an object of its own, so what refers to containers equals nothing
/// else; only lists of keys repeat.
constexpr auto kContents = BinaryPropertyListWriter::Sharing::none;

/// The root object's place: right behind "$null".
constexpr std::uint32_t kRootIndex = 1;

/// What is wrong with a graph, or null.
const char* flaw(const PropertyList& graph, std::size_t depth) {
    if (graph.uid() != nullptr) {
        return "holds an archive reference";
    }
    const PropertyList::Array* array = graph.array();
    const PropertyListDictionary* dictionary = graph.dictionary();
    if (array == nullptr && dictionary == nullptr) {
        return nullptr;
    }
    if (depth >= kMaxDepth) {
        return "nests too deeply";
    }
    const char* found = nullptr;
    if (array != nullptr) {
        for (auto it = array->begin(); it != array->end() && found == nullptr; ++it) {
            found = flaw(*it, depth + 1);
        }
    } else {
        for (auto it = dictionary->begin(); it != dictionary->end() && found == nullptr; ++it) {
            found = flaw(it->value, depth + 1);
        }
    }
    return found;
}

} // namespace

Result<Done> checkGraph(const PropertyList& graph) {
    if (const char* found = flaw(graph, 0)) {
        return Failure{cocoaError(kCoderInvalidValue,
                                  std::string("a value that cannot be archived ") + found)};
    }
    return Done{};
}

KeyedArchiveWriter::KeyedArchiveWriter() { objects_.push_back(writer_.string(kNullObject)); }

Result<Done> KeyedArchiveWriter::encodeEncodable(const PropertyList& graph, std::string_view key) {
    auto checked = checkGraph(graph);
    if (!checked) {
        return checked;
    }
    const Reference name = writer_.string(escapedKey(key));
    if (std::find(rootKeys_.begin(), rootKeys_.end(), name) != rootKeys_.end()) {
        return Failure{cocoaError(kCoderInvalidValue,
                                  "the key \"" + std::string(key) + "\" is archived already")};
    }
    if (objects_.size() == kRootIndex) {
        reserve();
    }
    const Index value = addGraph(graph);
    rootKeys_.push_back(name);
    rootValues_.push_back(writer_.uid(value));
    return Done{};
}

Bytes KeyedArchiveWriter::finishObject(std::string_view className) {
    if (objects_.size() == kRootIndex) {
        reserve();
    }
    const Index type = classIndex(className);
    rootKeys_.push_back(word(classKey_, kClassKey));
    rootValues_.push_back(writer_.uid(type));
    objects_[kRootIndex] = writer_.dictionary(rootKeys_, rootValues_);
    return finish(kRootIndex);
}

Bytes KeyedArchiveWriter::finishPlain(PlainClass kind, const PropertyList& graph) {
    return finish(addPlain(kind, graph));
}

KeyedArchiveWriter::Index KeyedArchiveWriter::reserve() {
    objects_.push_back(0);
    return static_cast<Index>(objects_.size() - 1);
}

KeyedArchiveWriter::Index KeyedArchiveWriter::addLeaf(Reference leaf) {
    if (leaf >= leafIndices_.size()) {
        leafIndices_.resize(std::max<std::size_t>(leaf + 1, 2 * leafIndices_.size()), 0);
    }
    if (leafIndices_[leaf] == 0) {
        objects_.push_back(leaf);
        leafIndices_[leaf] = static_cast<Index>(objects_.size() - 1);
    }
    return leafIndices_[leaf];
}

/// Text that reads as the mark for nothing is an object around its text: other readers take the
/// plain text for nothing wherever it stands.
KeyedArchiveWriter::Index KeyedArchiveWriter::addText(std::string_view text) {
    const Reference leaf = writer_.string(text);
    return text == kNullObject ? addKeyed(plainClassName(PlainClass::string), {{kStringKey, leaf}})
                               : addLeaf(leaf);
}

KeyedArchiveWriter::Index KeyedArchiveWriter::addGraph(const PropertyList& graph) {
    if (const PropertyList::Date* moment = graph.date()) {
        return addKeyed(plainClassName(PlainClass::date),
                        {{kTimeKey, writer_.real(moment->seconds)}});
    }
    const PropertyList::Array* array = graph.array();
    const PropertyListDictionary* dictionary = graph.dictionary();
    if (array == nullptr && dictionary == nullptr) {
        return graph.string() != nullptr ? addText(*graph.string()) : addLeaf(writer_.value(graph));
    }
    const Index index = reserve();
    const std::size_t base = stack_.size();
    if (array != nullptr) {
        for (const PropertyList& element : *array) {
            const Index child = addGraph(element);
            stack_.push_back(writer_.uid(child));
        }
        const Reference elements = indexArray(base, kContents);
        const std::array keys{word(objectsKey_, kObjectsKey), word(classKey_, kClassKey)};
        const std::array values{elements,
                                writer_.uid(classIndex(plainClassName(PlainClass::array)))};
        objects_[index] = writer_.dictionary(keys, values, kContents);
    } else {
        for (const PropertyListDictionary::Entry& entry : *dictionary) {
            const Index child = addText(entry.key);
            stack_.push_back(writer_.uid(child));
        }
        const Reference names = indexArray(base, Sharing::equal);
        for (const PropertyListDictionary::Entry& entry : *dictionary) {
            const Index child = addGraph(entry.value);
            stack_.push_back(writer_.uid(child));
        }
        const Reference elements = indexArray(base, kContents);
        const std::array keys{word(keysKey_, kKeysKey), word(objectsKey_, kObjectsKey),
                              word(classKey_, kClassKey)};
        const std::array values{names, elements,
                                writer_.uid(classIndex(plainClassName(PlainClass::dictionary)))};
        objects_[index] = writer_.dictionary(keys, values, kContents);
    }
    return index;
}

/// The array of what lies on the stack above `from`, which it takes off.
KeyedArchiveWriter::Reference KeyedArchiveWriter::indexArray(std::size_t from, Sharing sharing) {
    const Reference array =
        writer_.array(std::span<const Reference>(stack_).subspan(from), sharing);
    stack_.resize(from);
    return array;
}

KeyedArchiveWriter::Index
KeyedArchiveWriter::addKeyed(std::string_view className,
                             std::initializer_list<std::pair<std::string_view, Reference>> keys) {
    const Index type = classIndex(className);
    std::vector<Reference> names;
    std::vector<Reference> values;
    for (const auto& [name, value] : keys) {
        names.push_back(writer_.string(name));
        values.push_back(value);
    }
    names.push_back(word(classKey_, kClassKey));
    values.push_back(writer_.uid(type));
    objects_.push_back(writer_.dictionary(names, values));
    return static_cast<Index>(objects_.size() - 1);
}

KeyedArchiveWriter::Index KeyedArchiveWriter::addOptional(const PropertyListDictionary& record,
                                                          std::string_view key) {
    const PropertyList* value = record.find(key);
    return value != nullptr ? addGraph(*value) : 0;
}

KeyedArchiveWriter::Index KeyedArchiveWriter::addPlain(PlainClass kind, const PropertyList& graph) {
    const PropertyListDictionary* record = graph.dictionary();
    if (kind == PlainClass::url && record != nullptr) {
        const Reference base = writer_.uid(addOptional(*record, kURLBase));
        const Reference relative = writer_.uid(addOptional(*record, kURLRelative));
        return addKeyed(plainClassName(kind), {{kBaseKey, base}, {kRelativeKey, relative}});
    }
    if (kind == PlainClass::error && record != nullptr) {
        const Reference domain = writer_.uid(addOptional(*record, kErrorDomain));
        const PropertyList* number = record->find(kErrorCode);
        const Reference code = writer_.value(number != nullptr ? *number : PropertyList(0));
        const Reference userInfo = writer_.uid(addOptional(*record, kErrorUserInfo));
        return addKeyed(plainClassName(kind),
                        {{kErrorDomain, domain}, {kErrorCode, code}, {kErrorUserInfo, userInfo}});
    }
    return addGraph(graph);
}

KeyedArchiveWriter::Reference KeyedArchiveWriter::word(Reference& known, std::string_view text) {
    if (known == 0) {
        known = writer_.string(text);
    }
    return known;
}

KeyedArchiveWriter::Index KeyedArchiveWriter::classIndex(std::string_view className) {
    for (const auto& [name, index] : classes_) {
        if (name == className) {
            return index;
        }
    }
    const std::array ancestry{writer_.string(className), writer_.string(kRootClassName)};
    const std::array keys{writer_.string(kClassNameKey), writer_.string(kClassesKey)};
    const std::array values{ancestry[0], writer_.array(ancestry)};
    objects_.push_back(writer_.dictionary(keys, values));
    const auto index = static_cast<Index>(objects_.size() - 1);
    classes_.emplace_back(className, index);
    return index;
}

Bytes KeyedArchiveWriter::finish(Index root) {
    const std::array topKeys{writer_.string(kRootKey)};
    const std::array topValues{writer_.uid(root)};
    const std::array keys{writer_.string(kVersionKey), writer_.string(kArchiverKey),
                          writer_.string(kTopKey), writer_.string(kObjectTableKey)};
    const std::array values{writer_.integer(kArchiveVersion), writer_.string(kArchiverName),
                            writer_.dictionary(topKeys, topValues), writer_.array(objects_)};
    return writer_.finish(writer_.dictionary(keys, values));
}

} // namespace vantor::archive
