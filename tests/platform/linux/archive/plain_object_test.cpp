#include "platform/linux/archive/plain_object.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(PlainObject, OnlyTextAnswersAsAString) {
    const auto string = makePlainClass("NSString");
    const auto number = makePlainClass("NSNumber");
    EXPECT_EQ(makePlainObject(*string, "x")->asString(), "x");
    EXPECT_EQ(makePlainObject(*number, 7)->asString(), std::nullopt);
}

TEST(PlainObject, DescribesItsValue) {
    const auto any = makePlainClass("NSNumber");
    EXPECT_EQ(makePlainObject(*any, "text")->description(), "text");
    EXPECT_EQ(makePlainObject(*any, -7)->description(), "-7");
    EXPECT_EQ(makePlainObject(*any, true)->description(), "1");
    EXPECT_EQ(
        makePlainObject(*any, PropertyListDictionary{{"relative", "file:///x"}})->description(),
        "file:///x");
    EXPECT_EQ(makePlainObject(*any, Bytes{})->description(), "<NSNumber>");
}

TEST(PlainObject, HasNoClassOfAnotherName) { EXPECT_EQ(makePlainClass("NSObject"), nullptr); }

} // namespace
} // namespace vantor
