#include "agent/output/x11/edid.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace vantor::agent::x11 {
namespace {

/// The parts that matter, of a display by "ABC".
std::vector<std::uint8_t> edid() {
    std::vector<std::uint8_t> bytes(128);
    std::fill(bytes.begin() + 1, bytes.begin() + 7, 0xFF);
    bytes[8] = 0x04;
    bytes[9] = 0x43;
    return bytes;
}

void setName(std::vector<std::uint8_t>& bytes, std::size_t descriptor, std::string_view name) {
    const auto start = bytes.begin() + static_cast<std::ptrdiff_t>(54 + 18 * descriptor);
    *(start + 3) = 0xFC;
    std::copy(name.begin(), name.end(), start + 5);
}

TEST(EDIDTest, NamesMakerAndModel) {
    auto bytes = edid();
    setName(bytes, 2, "Panel 27\n    ");
    EXPECT_EQ(parseEDID(bytes), (DisplayName{.make = "ABC", .model = "Panel 27"}));
}

TEST(EDIDTest, NameMayFillItsWholeDescriptor) {
    auto bytes = edid();
    setName(bytes, 3, "ThirteenChars");
    EXPECT_EQ(parseEDID(bytes).model, "ThirteenChars");
}

TEST(EDIDTest, TimingIsNoName) {
    auto bytes = edid();
    setName(bytes, 0, "Timing");
    bytes[54] = 1;
    EXPECT_EQ(parseEDID(bytes).model, "");
}

TEST(EDIDTest, OnlyPrintableCharactersAreTold) {
    auto bytes = edid();
    setName(bytes, 1,
            "A\x01"
            "B\xFF"
            "C \n");
    EXPECT_EQ(parseEDID(bytes).model, "ABC");
}

TEST(EDIDTest, MakerOfNoLettersIsNone) {
    auto bytes = edid();
    bytes[8] = 0xFF;
    bytes[9] = 0xFF;
    EXPECT_EQ(parseEDID(bytes).make, "");
    bytes[8] = 0;
    bytes[9] = 0;
    EXPECT_EQ(parseEDID(bytes).make, "");
}

TEST(EDIDTest, WhatIsNoEDIDNamesNothing) {
    EXPECT_EQ(parseEDID({}), DisplayName{});
    EXPECT_EQ(parseEDID(std::vector<std::uint8_t>(128, 0x20)), DisplayName{});
    auto bytes = edid();
    bytes.resize(127);
    EXPECT_EQ(parseEDID(bytes), DisplayName{});
}

} // namespace
} // namespace vantor::agent::x11
