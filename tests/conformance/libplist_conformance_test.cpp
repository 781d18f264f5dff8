// Our binary lists against libplist: it must read what we write, and we what it writes.

#include "platform/linux/archive/property_list_codec.h"

#include <gtest/gtest.h>
#include <plist/plist.h>

#include <limits>
#include <memory>

namespace vantor {
namespace {

struct NodeDeleter {
    void operator()(void* node) const { plist_free(node); }
};

/// What libplist makes of our bytes, written by it.
Bytes throughLibplist(const Bytes& bytes) {
    plist_t raw = nullptr;
    plist_from_bin(reinterpret_cast<const char*>(bytes.data()),
                   static_cast<std::uint32_t>(bytes.size()), &raw);
    const std::unique_ptr<void, NodeDeleter> node(raw);
    char* out = nullptr;
    std::uint32_t length = 0;
    if (node) {
        plist_to_bin(node.get(), &out, &length);
    }
    Bytes written(reinterpret_cast<std::uint8_t*>(out),
                  reinterpret_cast<std::uint8_t*>(out) + length);
    plist_to_bin_free(out);
    return written;
}

void expectSame(const PropertyList& value) {
    PropertyListCodec codec;
    const auto back = codec.read(throughLibplist(codec.writeBinary(value)));
    ASSERT_TRUE(back.hasValue()) << back.error().message;
    EXPECT_EQ(back.value(), value);
}

TEST(LibplistConformance, EveryKindOfValueSurvives) {
    expectSame(PropertyListDictionary{
        {"flags", PropertyList::Array{true, false}},
        {"integers", PropertyList::Array{0, 255, 65536, std::numeric_limits<std::int64_t>::max(),
                                         PropertyList(std::numeric_limits<std::uint64_t>::max())}},
        {"reals", PropertyList::Array{0.5, -1e300}},
        {"text", PropertyList::Array{"", "plain", "ä 漢 😀", std::string(300, 'x')}},
        {"data", PropertyList::Array{Bytes{}, Bytes(300, 7)}},
        {"date", PropertyList::Date{1e8}},
        {"reference", PropertyList::Array{PropertyList::UID{3}, PropertyList::UID{70000}}},
        {"empty",
         PropertyList::Array{PropertyListDictionary{}, PropertyList(PropertyList::Array{})}},
    });
}

TEST(LibplistConformance, NegativeIntegersSurvive) {
    expectSame(PropertyList::Array{-1, -70000, std::numeric_limits<std::int64_t>::min()});
}

TEST(LibplistConformance, ManyObjectsSurvive) {
    PropertyList::Array numbers;
    for (int index = 0; index < 70000; ++index) {
        numbers.emplace_back(index);
    }
    expectSame(numbers);
}

} // namespace
} // namespace vantor
