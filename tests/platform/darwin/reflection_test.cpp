// The C++ side of mirrors, over an interface that plays Swift's part.

#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/swift_interface.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

namespace {

/// A value as Swift's mirror shows it.
struct Value {
    std::vector<std::pair<const char*, const Value*>> children = {};
    bool enumeration = false;
    const char* description = "";
    std::optional<vantor::Bytes> bytes = {};
    std::optional<vantor::UUID> uuid = {};
    std::optional<vantor::Size> size = {};
    std::optional<double> number = {};
    std::optional<std::uint32_t> unsignedNumber = {};
    std::optional<bool> flag = {};
    const char* fileURL = nullptr;
};

int mirrors = 0;

const Value& of(VantorMirror mirror) { return *static_cast<const Value*>(mirror); }

char* copied(const char* text) { return text != nullptr ? strdup(text) : nullptr; }

template <typename T>
bool give(const std::optional<T>& value, T* out) {
    *out = value.value_or(T());
    return value.has_value();
}

} // namespace

VantorMirror VantorMirrorCreate(const void* object) {
    ++mirrors;
    return object;
}
void VantorMirrorRelease(VantorMirror) { --mirrors; }
size_t VantorMirrorChildCount(VantorMirror mirror) { return of(mirror).children.size(); }
VantorMirror VantorMirrorCreateChild(VantorMirror mirror, size_t index) {
    return VantorMirrorCreate(of(mirror).children[index].second);
}
char* VantorMirrorCopyChildLabel(VantorMirror mirror, size_t index) {
    return copied(of(mirror).children[index].first);
}
bool VantorMirrorIsEnumeration(VantorMirror mirror) { return of(mirror).enumeration; }
char* VantorMirrorCopyDescription(VantorMirror mirror) { return copied(of(mirror).description); }
uint8_t* VantorMirrorCopyBytes(VantorMirror mirror, size_t* count) {
    const auto& bytes = of(mirror).bytes;
    if (!bytes) {
        return nullptr;
    }
    *count = bytes->size();
    auto* copy = static_cast<uint8_t*>(std::malloc(bytes->size() + 1));
    std::copy(bytes->begin(), bytes->end(), copy);
    return copy;
}
bool VantorMirrorGetUUID(VantorMirror mirror, uint8_t* bytes) {
    const auto& uuid = of(mirror).uuid;
    if (uuid) {
        std::copy(uuid->bytes.begin(), uuid->bytes.end(), bytes);
    }
    return uuid.has_value();
}
bool VantorMirrorGetSize(VantorMirror mirror, double* width, double* height) {
    const auto& size = of(mirror).size;
    *width = size ? size->width : 0;
    *height = size ? size->height : 0;
    return size.has_value();
}
bool VantorMirrorGetDouble(VantorMirror mirror, double* value) {
    return give(of(mirror).number, value);
}
bool VantorMirrorGetUInt32(VantorMirror mirror, uint32_t* value) {
    return give(of(mirror).unsignedNumber, value);
}
bool VantorMirrorGetBoolean(VantorMirror mirror, bool* value) {
    return give(of(mirror).flag, value);
}
char* VantorMirrorCopyFileURL(VantorMirror mirror) { return copied(of(mirror).fileURL); }

namespace vantor::darwin {
namespace {

TEST(DarwinReflection, ChildrenKeepTheirOrderAndLabels) {
    const Value first{.description = "1"};
    const Value second{.description = "2"};
    const Value root{.children = {{"a", &first}, {nullptr, &second}, {"a", &second}}};
    const auto children = reflect(&root)->children();
    ASSERT_EQ(children.size(), 3U);
    EXPECT_EQ(children[0].label, "a");
    EXPECT_EQ(children[0].value->description(), "1");
    EXPECT_EQ(children[1].label, std::nullopt);
    EXPECT_EQ(children[2].label, "a");
    EXPECT_EQ(children[2].value->description(), "2");
}

TEST(DarwinReflection, AViewGivesExactlyWhatTheValueIs) {
    const Value nothing;
    const ReflectedRef none = reflect(&nothing);
    EXPECT_FALSE(none->isEnumeration());
    EXPECT_EQ(none->asBytes(), std::nullopt);
    EXPECT_EQ(none->asUUID(), std::nullopt);
    EXPECT_EQ(none->asSize(), std::nullopt);
    EXPECT_EQ(none->asDouble(), std::nullopt);
    EXPECT_EQ(none->asUInt32(), std::nullopt);
    EXPECT_EQ(none->asBoolean(), std::nullopt);
    EXPECT_EQ(none->asFileURL(), std::nullopt);

    const UUID uuid = UUID::random();
    const Value everything{.enumeration = true,
                           .bytes = Bytes{0, 1, 255},
                           .uuid = uuid,
                           .size = Size{.width = 3, .height = 4.5},
                           .number = 2.5,
                           .unsignedNumber = 4294967295U,
                           .flag = true,
                           .fileURL = "file:///a%20b"};
    const ReflectedRef all = reflect(&everything);
    EXPECT_TRUE(all->isEnumeration());
    EXPECT_EQ(all->asBytes(), (Bytes{0, 1, 255}));
    EXPECT_EQ(all->asUUID(), uuid);
    EXPECT_EQ(all->asSize(), (Size{.width = 3, .height = 4.5}));
    EXPECT_EQ(all->asDouble(), 2.5);
    EXPECT_EQ(all->asUInt32(), 4294967295U);
    EXPECT_EQ(all->asBoolean(), true);
    EXPECT_EQ(all->asFileURL(), "file:///a%20b");
}

TEST(DarwinReflection, EveryMirrorIsReleased) {
    const Value leaf{.bytes = Bytes{}};
    const Value root{.children = {{"a", &leaf}, {"b", &leaf}}};
    {
        const auto children = reflect(&root)->children();
        EXPECT_EQ(mirrors, 2) << "the root's went with it";
        EXPECT_EQ(children[0].value->asBytes(), Bytes{});
    }
    EXPECT_EQ(mirrors, 0);
}

} // namespace
} // namespace vantor::darwin
