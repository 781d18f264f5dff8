#include "platform/linux/archive/wire_object.h"

#include "platform/linux/archive/class_registry.h"
#include "platform/linux/archive/plain_object.h"
#include "tests/platform/linux/archive/archive_bytes.h"
#include "tests/platform/linux/archive/record_class.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantor {
namespace {

using ::testing::HasSubstr;

class WireObjectTest : public ::testing::Test {
  protected:
    WireObjectTest() {
        registry_.registerClass(record_);
        registry_.registerClass(other_);
        for (const std::string_view name : kPlainClassNames) {
            allowed_.push_back(registry_.classNamed(name));
        }
        allowed_.push_back(&record_);
    }

    ObjectRef plain(std::string_view name, PropertyList value) {
        return makePlainObject(*registry_.classNamed(name), std::move(value));
    }

    const RecordClass record_{"Record"};
    const RecordClass other_{"Other"};
    ClassRegistry registry_;
    std::vector<const ObjectClass*> allowed_;
};

TEST_F(WireObjectTest, CarriesRecords) {
    const PropertyList payload = PropertyListDictionary{{"id", "x"}};
    const auto archive = archiveObject(*record_.make(payload));
    ASSERT_TRUE(archive.hasValue());
    const auto object = unarchiveObject(archive.value(), allowed_, registry_);
    ASSERT_TRUE(object.hasValue()) << object.error().message;
    EXPECT_EQ(&object.value()->objectClass(), &record_);
    EXPECT_EQ(object.value()->valueForKey("payload"), payload);
}

TEST_F(WireObjectTest, CarriesPlainObjectsOfEveryClass) {
    const std::vector<std::pair<std::string_view, PropertyList>> values{
        {"NSString", "ä"},
        {"NSNumber", 3.5},
        {"NSNumber", true},
        {"NSData", Bytes{1, 2}},
        {"NSArray", PropertyList::Array{1, "two"}},
        {"NSDictionary", PropertyListDictionary{{"relative", "no URL"}}},
        {"NSURL", PropertyListDictionary{{"relative", "file:///x%20y"}}},
        {"NSError", PropertyListDictionary{{"NSDomain", "D"},
                                           {"NSCode", 2},
                                           {"NSUserInfo", PropertyListDictionary{{"k", "v"}}}}},
    };
    for (const auto& [name, value] : values) {
        const auto archive = archiveObject(*plain(name, value));
        ASSERT_TRUE(archive.hasValue()) << name;
        const auto object = unarchiveObject(archive.value(), allowed_, registry_);
        ASSERT_TRUE(object.hasValue()) << name << ": " << object.error().message;
        EXPECT_EQ(object.value()->objectClass().name(), name);
        EXPECT_EQ(object.value()->valueForKey(kPlainValueKey), value) << name;
    }
}

TEST_F(WireObjectTest, RefusesClassesThatTheSlotDoesNotAllow) {
    const auto archive = archiveObject(*other_.make(1));
    const auto object = unarchiveObject(archive.value(), allowed_, registry_);
    ASSERT_FALSE(object.hasValue());
    EXPECT_THAT(object.error().message, HasSubstr("\"Other\" is not allowed here"));
    const auto text = archiveObject(*plain("NSString", "x"));
    EXPECT_FALSE(
        unarchiveObject(text.value(), std::array<const ObjectClass*, 1>{&record_}, registry_)
            .hasValue());
    EXPECT_FALSE(unarchiveObject(text.value(), {}, registry_).hasValue());
}

TEST_F(WireObjectTest, RefusesClassesThatNobodyKnows) {
    const RecordClass stranger("Stranger");
    const auto archive = archiveObject(*stranger.make(1));
    const auto object = unarchiveObject(archive.value(), allowed_, registry_);
    ASSERT_FALSE(object.hasValue());
    EXPECT_THAT(object.error().message, HasSubstr("\"Stranger\" is not known"));
}

TEST_F(WireObjectTest, RefusesBytesThatAreNoArchive) {
    EXPECT_FALSE(unarchiveObject({}, allowed_, registry_).hasValue());
    EXPECT_FALSE(unarchiveObject(bytesOf("GET / HTTP/1.1"), allowed_, registry_).hasValue());
}

TEST_F(WireObjectTest, RefusesEveryTruncationOfAnArchive) {
    const auto archive = archiveObject(*record_.make(PropertyListDictionary{{"id", "x"}}));
    const Bytes& whole = archive.value();
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_FALSE(
            unarchiveObject(std::span(whole).first(length), allowed_, registry_).hasValue())
            << length;
    }
}

} // namespace
} // namespace vantor
