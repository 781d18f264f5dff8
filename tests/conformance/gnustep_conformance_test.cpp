// Our keyed archives against GNUstep's Foundation: its unarchiver must find under each key what we
// put there, and our unarchiver what its archiver puts there.

#include "agent/kit/kit_classes.h"
#include "bridge/carrier.h"
#include "bridge/settings_view_models.h"
#include "platform/linux/archive/archive_keyed_archiving.h"
#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/property_list_codec.h"
#include "platform/linux/archive/wire_object.h"
#include "tests/support/kit_payloads.h"
#include "tests/support/picker_records.h"
#include "tests/support/temporary_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <limits>

namespace vantor {
namespace {

using Array = PropertyList::Array;
using Dictionary = PropertyListDictionary;

std::string text(std::string_view value) {
    std::string out = "\"";
    for (const char c : value) {
        if (c == '"' || c == '\\') {
            out += '\\';
        }
        out += c;
    }
    return out + '"';
}

std::string hexadecimal(double value) {
    char digits[64];
    std::snprintf(digits, sizeof(digits), "%a", value);
    return digits;
}

/// As the foreign program prints it.
std::string printed(const PropertyList& value) {
    if (const bool* flag = value.boolean()) {
        return *flag ? "true" : "false";
    }
    if (const std::int64_t* number = value.integer()) {
        return std::to_string(*number);
    }
    if (const std::uint64_t* number = value.unsignedInteger()) {
        return std::to_string(*number);
    }
    if (const double* number = value.real()) {
        return "real " + hexadecimal(*number);
    }
    if (const std::string* string = value.string()) {
        return text(*string);
    }
    if (const PropertyList::Date* date = value.date()) {
        return "date " + hexadecimal(date->seconds);
    }
    std::string out;
    if (const Bytes* bytes = value.data()) {
        char digits[3];
        for (const std::uint8_t byte : *bytes) {
            std::snprintf(digits, sizeof(digits), "%02x", byte);
            out += digits;
        }
        return "<" + out + ">";
    }
    if (const Array* elements = value.array()) {
        for (const PropertyList& element : *elements) {
            out += printed(element) + ",";
        }
        return "[" + out + "]";
    }
    std::vector<const Dictionary::Entry*> sorted;
    for (const Dictionary::Entry& entry : *value.dictionary()) {
        sorted.push_back(&entry);
    }
    std::ranges::sort(sorted, {}, [](const auto* entry) { return std::string_view(entry->key); });
    for (const auto* entry : sorted) {
        out += text(entry->key) + ":" + printed(entry->value) + ",";
    }
    return "{" + out + "}";
}

/// Runs the foreign program on these bytes; what it prints, or what it complains of.
std::string foreign(std::string_view verb, std::string_view className, std::string_view key,
                    const Bytes& input) {
    const TemporaryFolder folder;
    const auto in = folder.path() / "in";
    const auto out = folder.path() / "out";
    std::ofstream(in, std::ios::binary)
        .write(reinterpret_cast<const char*>(input.data()),
               static_cast<std::streamsize>(input.size()));
    const std::string command = std::string(GNUSTEP_ARCHIVER) + " " + std::string(verb) + " " +
                                std::string(className) + " '" + std::string(key) + "' <" +
                                in.native() + " >" + out.native() + " 2>&1";
    const int status = std::system(command.c_str());
    std::ifstream stream(out, std::ios::binary);
    std::string printed{std::istreambuf_iterator<char>(stream), {}};
    return status == 0 ? printed : "failed: " + printed;
}

Bytes carrierArchive(const PropertyList& payload, std::string_view key) {
    const PrivateBridge::Carrier carrier(
        [&](KeyedEncoder& encoder) { return encoder.encodeEncodable(payload, key); });
    return ArchiveKeyedArchiving()
        .archiveRootObject(PrivateBridge::Carrier::kClassName,
                           [&](KeyedEncoder& encoder) { carrier.encode(encoder); })
        .value();
}

/// What the foreign unarchiver finds in the carrier of a payload.
std::string foreignReading(const PropertyList& payload, std::string_view key) {
    return foreign("read", PrivateBridge::Carrier::kClassName, key, carrierArchive(payload, key));
}

/// Takes whatever stands under its key.
class ReadingClass final : public ObjectClass {
  public:
    explicit ReadingClass(std::string key) : key_(std::move(key)) {}

    const std::string& name() const override { return name_; }
    bool isObjectSubclass() const override { return true; }
    bool respondsTo(std::string_view) const override { return false; }
    ObjectRef perform(std::string_view, const Dictionary&) const override { return nullptr; }
    ObjectRef decodeInstance(KeyedDecoder& decoder) const override {
        payload = decoder.decodeEncodable(key_);
        return nullptr;
    }

    mutable std::optional<PropertyList> payload;

  private:
    const std::string name_ = "Reading";
    const std::string key_;
};

/// What our unarchiver finds in the foreign archive of a payload.
std::string ourReading(const PropertyList& payload, std::string_view className,
                       std::string_view key) {
    const std::string archive =
        foreign("write", className, key, PropertyListCodec().writeBinary(payload));
    const Bytes bytes(archive.begin(), archive.end());
    auto unarchiver = ArchiveKeyedArchiving().unarchiver(bytes);
    if (!unarchiver) {
        return unarchiver.error().message + " in " + archive.substr(0, 200);
    }
    const ReadingClass reading{std::string(key)};
    unarchiver.value()->setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    unarchiver.value()->setClass(reading, className);
    unarchiver.value()->decodeRootObject(std::array<const ObjectClass*, 1>{&reading});
    return reading.payload ? printed(*reading.payload) : unarchiver.value()->error()->message;
}

/// But the text "$null", which GNUstep takes for nothing in each of its forms.
const std::map<std::string, PropertyList> kValues{
    {"nothing", Dictionary{}},
    {"flags", Array{true, false}},
    {"integers",
     Array{0, 1, -1, 127, 128, 255, 256, 65535, 65536,
           std::int64_t{std::numeric_limits<std::uint32_t>::max()},
           std::numeric_limits<std::int64_t>::max(), std::numeric_limits<std::int64_t>::min()}},
    {"reals", Array{0.5, -1e300, 5e-324, 1.0 / 3}},
    {"text", Array{"", "plain", "Größe 夜 🌌", "a\"b\\c", std::string(300, 'x')}},
    {"data", Array{Bytes{}, Bytes{0, 255}, Bytes(300, 7)}},
    {"dates", Array{PropertyList::Date{0}, PropertyList::Date{-1e9}, PropertyList::Date{7.25e8}}},
    {"containers", Array{Array{}, Dictionary{}, Array{Array{Array{1}}},
                         Dictionary{{"a", Dictionary{{"b", Array{"c"}}}}}}},
    {"keys", Dictionary{{"", 1}, {"$class", 2}, {"ä", 3}, {"NS.keys", 4}}},
    {"repeated", Array{"one", "one", 7, 7, Array{"one"}, Array{"one"}}},
};

TEST(GNUstepConformance, ItFindsEveryKindOfValueThatWeArchive) {
    for (const auto& [name, value] : kValues) {
        EXPECT_EQ(foreignReading(value, "Value"), printed(value)) << name;
    }
}

TEST(GNUstepConformance, WeFindEveryKindOfValueThatItArchives) {
    for (const auto& [name, value] : kValues) {
        EXPECT_EQ(ourReading(value, "VantorXPCCarrier", "Value"), printed(value)) << name;
    }
}

TEST(GNUstepConformance, ItFindsTheRemoteContextsIdentifier) {
    for (const std::uint32_t identifier : {1U, 4711U, std::numeric_limits<std::uint32_t>::max()}) {
        EXPECT_EQ(foreignReading(identifier, "UInt32"), std::to_string(identifier));
    }
}

/// Each record by itself, and whole view models of both extremes.
std::map<std::string, PropertyList> records() {
    std::map<std::string, PropertyList> graphs;
    const auto add = [&](const char* name, const auto& record) {
        graphs.emplace(name, encodeRecord(record).value());
    };
    add("view models", fullPicker());
    add("no view models", SettingsViewModels{});
    add("only the screen saver's", SettingsViewModels{.screenSaver = SettingsViewModel{}});
    add("group", fullGroup());
    add("group without items", SettingsGroup{});
    add("item", fullItem());
    add("item without what may be absent", plainItem());
    add("choice", fullItem().choice);
    add("descriptor", fullItem().choice.id.descriptor);
    add("menu", *fullItem().contextMenu);
    add("menu without items", ContextMenu{});
    add("identifier", StringID{"ä"});
    return graphs;
}

TEST(GNUstepConformance, ItFindsEveryRecordOfThePicker) {
    for (const auto& [name, graph] : records()) {
        EXPECT_EQ(foreignReading(graph, SettingsViewModels::kPayloadName), printed(graph)) << name;
    }
}

TEST(GNUstepConformance, WeFindEveryRecordOfThePickerInItsArchives) {
    for (const auto& [name, graph] : records()) {
        EXPECT_EQ(ourReading(graph, "VantorXPCCarrier", SettingsViewModels::kPayloadName),
                  printed(graph))
            << name;
    }
}

TEST(GNUstepConformance, ItFindsNothingUnderAKeyThatIsNotThere) {
    EXPECT_EQ(foreign("read", "VantorXPCCarrier", "Another", carrierArchive(7, "UInt32")),
              "nothing");
}

TEST(GNUstepConformance, ItFindsThePayloadOfEveryClassOfTheAgent) {
    for (const auto& [className, key, payload] : kitPayloads()) {
        const ObjectRef object = agent::makeKitObject(className, payload);
        ASSERT_NE(object, nullptr) << className;
        EXPECT_EQ(foreign("read", className, key, archiveObject(*object).value()), printed(payload))
            << className;
    }
}

TEST(GNUstepConformance, ItsArchivesOfEveryClassOfTheAgentAreReadByThatClass) {
    ClassRegistry runtime;
    agent::registerKitClasses(runtime);
    for (const auto& [className, key, payload] : kitPayloads()) {
        const std::string archive =
            foreign("write", className, key, PropertyListCodec().writeBinary(payload));
        const auto object = unarchiveObject(Bytes(archive.begin(), archive.end()),
                                            std::array{agent::kitClass(className)}, runtime);
        ASSERT_TRUE(object.hasValue()) << className << ": " << object.error().message;
        EXPECT_EQ(foreign("read", className, key, archiveObject(*object.value()).value()),
                  printed(payload))
            << className;
    }
}

} // namespace
} // namespace vantor
