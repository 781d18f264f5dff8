#pragma once
// Objects of the system, as C++ sees them. Headers of this folder are C++ only; what an object can
// do is known in the .mm files alone.

#include <utility>

namespace vantor::darwin {

void retainNative(const void* object);
void releaseNative(const void* object);

/// A strong reference to an Objective-C or Core Foundation object, or to nothing.
class NativeRef {
  public:
    NativeRef() = default;
    /// Takes a reference of its own.
    explicit NativeRef(const void* object) : object_(object) { retain(); }
    NativeRef(const NativeRef& other) : object_(other.object_) { retain(); }
    NativeRef(NativeRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    NativeRef& operator=(NativeRef other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~NativeRef() {
        if (object_ != nullptr) {
            releaseNative(object_);
        }
    }

    const void* get() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }

  private:
    void retain() const {
        if (object_ != nullptr) {
            retainNative(object_);
        }
    }

    const void* object_ = nullptr;
};

/// Something that stands for an object of the system; found with a dynamic cast.
class NativeHolder {
  public:
    virtual ~NativeHolder() = default;
    virtual const NativeRef& native() const = 0;
};

} // namespace vantor::darwin
