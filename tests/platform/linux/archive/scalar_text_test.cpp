#include "platform/linux/archive/scalar_text.h"

#include <gtest/gtest.h>

namespace vantor::archive {
namespace {

TEST(ScalarText, RefusesIntegersOutOfRangeOrForm) {
    EXPECT_FALSE(parseInteger("18446744073709551616"));
    EXPECT_FALSE(parseInteger("-9223372036854775809"));
    EXPECT_FALSE(parseInteger(""));
    EXPECT_FALSE(parseInteger("0x"));
    EXPECT_FALSE(parseInteger("--1"));
    EXPECT_FALSE(parseInteger("+-1"));
    EXPECT_EQ(parseInteger("+1"), PropertyList(1));
}

TEST(ScalarText, RefusesRealsOfAnotherForm) {
    EXPECT_FALSE(parseReal(""));
    EXPECT_FALSE(parseReal("1,5"));
    EXPECT_FALSE(parseReal("+-1"));
    EXPECT_FALSE(parseReal("1.0 2.0"));
    EXPECT_EQ(parseReal("+2.5"), PropertyList(2.5));
}

TEST(ScalarText, RefusesDatesThatNoCalendarHas) {
    EXPECT_FALSE(parseDate("2001-02-29T00:00:00Z"));
    EXPECT_FALSE(parseDate("2001-13-01T00:00:00Z"));
    EXPECT_FALSE(parseDate("2001-01-01T24:00:00Z"));
    EXPECT_FALSE(parseDate("2001-01-01T00:00:00"));
    EXPECT_FALSE(parseDate("2001-01-01 00:00:00Z"));
    EXPECT_EQ(parseDate("2000-12-31T23:59:59Z"), PropertyList(PropertyList::Date{-1}));
    EXPECT_EQ(parseDate("2004-02-29T00:00:00Z"), PropertyList(PropertyList::Date{99705600}));
}

TEST(ScalarText, ReadsBase64OfEveryRemainder) {
    EXPECT_EQ(parseBase64(""), PropertyList(Bytes{}));
    EXPECT_EQ(parseBase64("/w=="), PropertyList(Bytes{0xff}));
    EXPECT_EQ(parseBase64("//8="), PropertyList(Bytes{0xff, 0xff}));
    EXPECT_EQ(parseBase64("AB+/"), PropertyList(Bytes{0x00, 0x1f, 0xbf}));
    EXPECT_FALSE(parseBase64("A"));
    EXPECT_FALSE(parseBase64("AA="));
    EXPECT_FALSE(parseBase64("A===="));
    EXPECT_FALSE(parseBase64("AA==AA=="));
    EXPECT_FALSE(parseBase64("A-AA"));
}

} // namespace
} // namespace vantor::archive
