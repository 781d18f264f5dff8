#include "platform/keyed_archive.h"
#include "platform/object_runtime.h"
#include "platform/property_list.h"
#include "tests/platform/contract/contract_subject.h"

#include <array>
#include <limits>

namespace vantor {
namespace {

constexpr std::string_view kCarrier = "VantorXPCCarrier";

class ValuesContract : public Contract {
  protected:
    Result<PropertyList> read(std::string_view text) {
        return platform.propertyLists().read(
            {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()});
    }
    /// An archived carrier that holds `graph` under a key.
    Result<Bytes> archived(const PropertyList& graph) {
        return platform.keyedArchiving().archiveRootObject(kCarrier, [&](KeyedEncoder& encoder) {
            EXPECT_TRUE(encoder.encodeEncodable(graph, "Value"));
        });
    }
};
VANTOR_CONTRACT(ValuesContract);

TEST_P(ValuesContract, EveryKindOfValueIsReadBackAsItWasWritten) {
    const PropertyList list = PropertyListDictionary{
        {"flags", PropertyList::Array{true, false}},
        {"integers",
         PropertyList::Array{0, 1, -1, 255, 65536, std::numeric_limits<std::int64_t>::min(),
                             std::numeric_limits<std::uint64_t>::max()}},
        {"reals", PropertyList::Array{0.5, -1e300}},
        {"text", PropertyList::Array{"", "plain", "Größe 夜 🌌"}},
        {"data", PropertyList::Array{Bytes{}, Bytes{0, 255}}},
        {"date", PropertyList::Date{7.25e8}},
        {"nothing", PropertyListDictionary{}},
    };
    const Bytes bytes = platform.propertyLists().writeBinary(list);
    const auto back = platform.propertyLists().read(bytes);
    ASSERT_TRUE(back) << back.error().message;
    EXPECT_EQ(back.value(), list);
}

TEST_P(ValuesContract, EveryEncodingIsRead) {
    const PropertyList expected = PropertyListDictionary{{"a", "b"}};
    EXPECT_EQ(read("<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>"
                   "<key>a</key><string>b</string></dict></plist>")
                  .value(),
              expected);
    EXPECT_EQ(read("{ a = b; }").value(), expected);
}

TEST_P(ValuesContract, WhatIsNoPropertyListIsAnErrorThatSaysWhy) {
    for (const std::string_view text : {"", "bplist00", "<plist><dict>", "{ a = ; "}) {
        const auto result = read(text);
        ASSERT_FALSE(result) << text;
        EXPECT_EQ(result.error().domain, "NSCocoaErrorDomain") << text;
        EXPECT_FALSE(result.error().message.empty()) << text;
    }
}

TEST_P(ValuesContract, SharedReferencesDoNotExpandWithoutBound) {
    // An array that holds twice an array that holds twice … 40 levels down: 2^40 values.
    constexpr std::uint8_t kLevels = 40;
    Bytes bytes{'b', 'p', 'l', 'i', 's', 't', '0', '0'};
    for (std::uint8_t level = 0; level < kLevels; ++level) {
        bytes.insert(bytes.end(), {0xA2, static_cast<std::uint8_t>(level + 1),
                                   static_cast<std::uint8_t>(level + 1)});
    }
    bytes.push_back(0xA0);
    const auto table = static_cast<std::uint8_t>(bytes.size());
    for (std::uint8_t level = 0; level <= kLevels; ++level) {
        bytes.push_back(static_cast<std::uint8_t>(8 + 3 * level));
    }
    const auto number = [&bytes](std::uint8_t value) {
        bytes.insert(bytes.end(), {0, 0, 0, 0, 0, 0, 0, value});
    };
    bytes.insert(bytes.end(), {0, 0, 0, 0, 0, 0, 1, 1});
    number(kLevels + 1);
    number(0);
    number(table);
    EXPECT_FALSE(platform.propertyLists().read(bytes));
}

TEST_P(ValuesContract, AnArchiveIsABinaryPropertyList) {
    const auto archive = archived(PropertyListDictionary{{"a", PropertyList::Array{1, "b"}}});
    ASSERT_TRUE(archive) << archive.error().message;
    ASSERT_GT(archive.value().size(), 8U);
    EXPECT_EQ(std::string(archive.value().begin(), archive.value().begin() + 8), "bplist00");
}

TEST_P(ValuesContract, AGraphDoesNotHoldAnArchiveReference) {
    const auto archive =
        platform.keyedArchiving().archiveRootObject(kCarrier, [](KeyedEncoder& encoder) {
            EXPECT_FALSE(encoder.encodeEncodable(PropertyList::Array{PropertyList::UID{1}}, "a"));
        });
    EXPECT_TRUE(archive) << "it is completed with what was written";
}

TEST_P(ValuesContract, AClassThatIsNotAllowedIsNotDecoded) {
    const auto archive = archived(7);
    ASSERT_TRUE(archive);
    auto unarchiver = platform.keyedArchiving().unarchiver(archive.value());
    ASSERT_TRUE(unarchiver) << unarchiver.error().message;
    unarchiver.value()->setDecodingFailurePolicy(DecodingFailurePolicy::setErrorAndReturn);
    const std::array allowed{platform.objectRuntime().classNamed("NSString")};
    EXPECT_EQ(unarchiver.value()->decodeRootObject(allowed), nullptr);
    const auto error = unarchiver.value()->error();
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain, "NSCocoaErrorDomain");
    unarchiver.value()->finishDecoding();
}

TEST_P(ValuesContract, BytesThatAreNoArchiveAreNotOpened) {
    const Bytes list = platform.propertyLists().writeBinary("text");
    EXPECT_FALSE(platform.keyedArchiving().unarchiver(list));
    EXPECT_FALSE(platform.keyedArchiving().unarchiver(Bytes{1, 2, 3}));
}

TEST_P(ValuesContract, AClassIsTheSameForEveryLookUp) {
    const ObjectRuntime& runtime = platform.objectRuntime();
    for (const char* name :
         {"NSString", "NSNumber", "NSData", "NSArray", "NSDictionary", "NSURL", "NSError"}) {
        const ObjectClass* found = runtime.classNamed(name);
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found, runtime.classNamed(name));
        EXPECT_EQ(found->name(), name);
        EXPECT_TRUE(found->isObjectSubclass()) << name;
        EXPECT_FALSE(found->respondsTo("remoteContextWithOptions:")) << name;
        EXPECT_EQ(found->perform("remoteContextWithOptions:", {}), nullptr) << name;
    }
    EXPECT_EQ(runtime.classNamed("VantorNoSuchClass"), nullptr);
}

} // namespace
} // namespace vantor
