#include "platform/uuid.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(UUID, ReadsEitherLetterCaseAndPrintsUpperCase) {
    const auto id = UUID::parse("0123abcd-4567-89EF-0011-2233445566ff");
    ASSERT_TRUE(id);
    EXPECT_EQ(id->text(), "0123ABCD-4567-89EF-0011-2233445566FF");
    EXPECT_EQ(id->bytes[0], 0x01);
    EXPECT_EQ(id->bytes[15], 0xFF);
}

TEST(UUID, RefusesEverythingButTheCanonicalShape) {
    EXPECT_FALSE(UUID::parse(""));
    EXPECT_FALSE(UUID::parse("0123abcd456789ef00112233445566ff"));
    EXPECT_FALSE(UUID::parse("{0123abcd-4567-89ef-0011-2233445566ff}"));
    EXPECT_FALSE(UUID::parse("0123abcd-4567-89ef-0011-2233445566fg"));
    EXPECT_FALSE(UUID::parse("0123abcd-4567-89ef-00112-233445566ff"));
    EXPECT_FALSE(UUID::parse("0123abcd-4567-89ef-0011-2233445566ff "));
}

TEST(UUID, RandomOnesDifferAndCarryTheVersion) {
    const UUID a = UUID::random();
    const UUID b = UUID::random();
    EXPECT_NE(a, b);
    EXPECT_EQ(a.bytes[6] >> 4, 4);
    EXPECT_EQ(a.bytes[8] >> 6, 2);
}

} // namespace
} // namespace vantor
