#include "platform/darwin/darwin_object_runtime.h"

#include "platform/darwin/swift_interface.h"

#include <cstdlib>

namespace vantor::darwin {
namespace {

/// A text that was copied out, freed; nothing for null.
std::optional<std::string> taken(char* text) {
    if (text == nullptr) {
        return std::nullopt;
    }
    std::string copy = text;
    std::free(text);
    return copy;
}

/// A view that its function gives through a pointer, where the value is of that kind.
template <typename T>
std::optional<T> given(bool (*get)(VantorMirror, T*), VantorMirror mirror) {
    T value{};
    return get(mirror, &value) ? std::optional(value) : std::nullopt;
}

class MirroredValue : public ReflectedValue {
  public:
    explicit MirroredValue(VantorMirror mirror) : mirror_(mirror) {}
    ~MirroredValue() override { VantorMirrorRelease(mirror_); }
    MirroredValue(const MirroredValue&) = delete;
    MirroredValue& operator=(const MirroredValue&) = delete;

    std::vector<ReflectedChild> children() const override {
        std::vector<ReflectedChild> children(VantorMirrorChildCount(mirror_));
        for (std::size_t index = 0; index < children.size(); ++index) {
            children[index] = {
                .label = taken(VantorMirrorCopyChildLabel(mirror_, index)),
                .value = std::make_shared<MirroredValue>(VantorMirrorCreateChild(mirror_, index))};
        }
        return children;
    }
    bool isEnumeration() const override { return VantorMirrorIsEnumeration(mirror_); }

    std::optional<Bytes> asBytes() const override {
        std::size_t count = 0;
        std::uint8_t* bytes = VantorMirrorCopyBytes(mirror_, &count);
        if (bytes == nullptr) {
            return std::nullopt;
        }
        Bytes copy(bytes, bytes + count);
        std::free(bytes);
        return copy;
    }
    std::optional<UUID> asUUID() const override {
        UUID value;
        return VantorMirrorGetUUID(mirror_, value.bytes.data()) ? std::optional(value)
                                                                : std::nullopt;
    }
    std::optional<Size> asSize() const override {
        Size value;
        return VantorMirrorGetSize(mirror_, &value.width, &value.height) ? std::optional(value)
                                                                         : std::nullopt;
    }
    std::optional<double> asDouble() const override {
        return given(VantorMirrorGetDouble, mirror_);
    }
    std::optional<std::uint32_t> asUInt32() const override {
        return given(VantorMirrorGetUInt32, mirror_);
    }
    std::optional<bool> asBoolean() const override {
        return given(VantorMirrorGetBoolean, mirror_);
    }
    std::optional<std::string> asFileURL() const override {
        return taken(VantorMirrorCopyFileURL(mirror_));
    }

    std::string description() const override {
        return taken(VantorMirrorCopyDescription(mirror_)).value_or("");
    }

  private:
    VantorMirror mirror_;
};

} // namespace

ReflectedRef reflect(const void* object) {
    return std::make_shared<MirroredValue>(VantorMirrorCreate(object));
}

} // namespace vantor::darwin
