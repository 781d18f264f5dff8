#include "platform/linux/archive/xml_property_list_reader.h"

#include "platform/linux/archive/archive_error.h"
#include "platform/linux/archive/expansion_budget.h"
#include "platform/linux/archive/scalar_text.h"

#include <expat.h>

#include <memory>

namespace vantor::archive {
namespace {

struct ParserDeleter {
    void operator()(XML_Parser parser) const { XML_ParserFree(parser); }
};

class Reader {
  public:
    Reader() : parser_(XML_ParserCreate(nullptr)) {}

    Result<PropertyList> read(std::span<const std::uint8_t> bytes) {
        if (!parser_) {
            return failure("has no memory for its parser");
        }
        XML_SetUserData(parser_.get(), this);
        XML_SetElementHandler(
            parser_.get(), [](void* self, const char* name, const char**) { of(self).open(name); },
            [](void* self, const char* name) { of(self).close(name); });
        XML_SetCharacterDataHandler(parser_.get(), [](void* self, const char* text, int length) {
            of(self).characters({text, static_cast<std::size_t>(length)});
        });
        XML_SetEntityDeclHandler(parser_.get(),
                                 [](void* self, const char*, int, const char*, int, const char*,
                                    const char*, const char*,
                                    const char*) { of(self).fail("declares an entity"); });
        // The limit on encoded bytes keeps the size within an int.
        const auto status = XML_Parse(parser_.get(), reinterpret_cast<const char*>(bytes.data()),
                                      static_cast<int>(bytes.size()), XML_TRUE);
        if (!error_.empty()) {
            return failure(error_);
        }
        if (status != XML_STATUS_OK) {
            return failure(std::string("is malformed at line ") +
                           std::to_string(XML_GetCurrentLineNumber(parser_.get())) + ": " +
                           XML_ErrorString(XML_GetErrorCode(parser_.get())));
        }
        if (!hasRoot_) {
            return failure("holds no value");
        }
        return std::move(root_);
    }

  private:
    struct Container {
        PropertyList value;
        std::string key;
        bool hasKey = false;
    };

    static Reader& of(void* self) { return *static_cast<Reader*>(self); }

    static Failure<Error> failure(const std::string& why) {
        return Failure{cocoaError(kPropertyListReadCorrupt, "XML property list " + why)};
    }

    void fail(const std::string& why) {
        if (error_.empty()) {
            error_ = why + " at line " + std::to_string(XML_GetCurrentLineNumber(parser_.get()));
            XML_StopParser(parser_.get(), XML_FALSE);
        }
    }

    void open(std::string_view name) {
        if (!error_.empty()) {
            return;
        }
        if (inLeaf_) {
            fail("has <" + std::string(name) + "> within text");
        } else if (name == "plist") {
            if (inPlist_ || hasRoot_ || !containers_.empty()) {
                fail("has <plist> within");
            }
            inPlist_ = true;
        } else if (name == "dict" || name == "array") {
            if (containers_.size() >= kMaxDepth) {
                fail("nests deeper than the limit of " + std::to_string(kMaxDepth));
            } else {
                containers_.push_back({.value = name == "dict"
                                                    ? PropertyList(PropertyListDictionary{})
                                                    : PropertyList(PropertyList::Array{}),
                                       .key = {},
                                       .hasKey = false});
            }
        } else {
            inLeaf_ = true;
            text_.clear();
        }
    }

    void characters(std::string_view text) {
        if (!error_.empty()) {
            return;
        }
        if (inLeaf_) {
            if (!budget_.take(0, text.size())) {
                fail(ExpansionBudget::exceeded());
                return;
            }
            text_.append(text);
        } else if (!trimmed(text).empty()) {
            fail("has text outside of a value");
        }
    }

    void close(std::string_view name) {
        if (!error_.empty() || name == "plist") {
            return;
        }
        if (name == "dict" || name == "array") {
            closeContainer();
            return;
        }
        inLeaf_ = false;
        if (name == "key") {
            if (containers_.empty() || containers_.back().value.dictionary() == nullptr ||
                containers_.back().hasKey) {
                fail("has a key where none belongs");
                return;
            }
            containers_.back().key = std::move(text_);
            containers_.back().hasKey = true;
        } else if (auto value = leaf(name)) {
            add(std::move(*value));
        } else {
            fail("has a malformed <" + std::string(name) + ">");
        }
    }

    std::optional<PropertyList> leaf(std::string_view name) {
        if (name == "string") {
            return PropertyList(std::move(text_));
        }
        if (name == "true" || name == "false") {
            return trimmed(text_).empty() ? std::optional(PropertyList(name == "true"))
                                          : std::nullopt;
        }
        if (name == "integer") {
            return parseInteger(text_);
        }
        if (name == "real") {
            return parseReal(text_);
        }
        if (name == "date") {
            return parseDate(text_);
        }
        if (name == "data") {
            return parseBase64(text_);
        }
        return std::nullopt;
    }

    void closeContainer() {
        Container container = std::move(containers_.back());
        containers_.pop_back();
        if (container.hasKey) {
            fail("has a key without a value");
            return;
        }
        if (const PropertyListDictionary* dictionary = container.value.dictionary();
            dictionary != nullptr && dictionary->size() == 1 &&
            dictionary->begin()->key == "CF$UID") {
            const std::int64_t* index = dictionary->begin()->value.integer();
            if (index != nullptr && *index >= 0 && *index <= INT64_C(0xffffffff)) {
                add(PropertyList(PropertyList::UID{static_cast<std::uint32_t>(*index)}));
                return;
            }
        }
        add(std::move(container.value));
    }

    void add(PropertyList value) {
        if (!budget_.take(1, 0)) {
            fail(ExpansionBudget::exceeded());
        } else if (containers_.empty()) {
            if (hasRoot_) {
                fail("has a second root");
                return;
            }
            root_ = std::move(value);
            hasRoot_ = true;
        } else if (PropertyList::Array* array = containers_.back().value.array()) {
            array->push_back(std::move(value));
        } else if (containers_.back().hasKey) {
            containers_.back().value.dictionary()->append(std::move(containers_.back().key),
                                                          std::move(value));
            containers_.back().key.clear();
            containers_.back().hasKey = false;
        } else {
            fail("has a value without a key");
        }
    }

    std::unique_ptr<XML_ParserStruct, ParserDeleter> parser_;
    std::vector<Container> containers_;
    std::string text_;
    PropertyList root_;
    bool hasRoot_ = false;
    bool inPlist_ = false;
    bool inLeaf_ = false;
    ExpansionBudget budget_;
    std::string error_;
};

} // namespace

Result<PropertyList> readXMLPropertyList(std::span<const std::uint8_t> bytes) {
    return Reader().read(bytes);
}

} // namespace vantor::archive
