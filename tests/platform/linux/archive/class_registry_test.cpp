#include "platform/linux/archive/class_registry.h"

#include "platform/linux/archive/plain_object.h"
#include "tests/platform/linux/archive/record_class.h"

#include <gtest/gtest.h>

namespace vantor {
namespace {

TEST(ClassRegistry, KnowsThePlainClassesFromTheStart) {
    const ClassRegistry registry;
    for (const std::string_view name : kPlainClassNames) {
        const ObjectClass* found = registry.classNamed(name);
        ASSERT_NE(found, nullptr) << name;
        EXPECT_EQ(found->name(), name);
        EXPECT_TRUE(found->isObjectSubclass());
    }
    EXPECT_EQ(registry.classNamed("CAContext"), nullptr);
    EXPECT_EQ(registry.classNamed(""), nullptr);
}

TEST(ClassRegistry, FindsAClassFromItsRegistrationOn) {
    ClassRegistry registry;
    const RecordClass late("Late");
    EXPECT_EQ(registry.classNamed("Late"), nullptr);
    EXPECT_TRUE(registry.registerClass(late));
    EXPECT_EQ(registry.classNamed("Late"), &late);
}

TEST(ClassRegistry, ANameThatIsTakenKeepsItsClass) {
    ClassRegistry registry;
    const RecordClass first("Name");
    const RecordClass second("Name");
    const RecordClass string("NSString");
    EXPECT_TRUE(registry.registerClass(first));
    EXPECT_FALSE(registry.registerClass(second));
    EXPECT_EQ(registry.classNamed("Name"), &first);
    EXPECT_FALSE(registry.registerClass(string));
    EXPECT_NE(registry.classNamed("NSString"), &string);
}

} // namespace
} // namespace vantor
