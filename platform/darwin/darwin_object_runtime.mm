#include "platform/darwin/darwin_object_runtime.h"

#include "platform/darwin/foundation.h"
#include "platform/keyed_archive.h"

#include <map>
#include <mutex>
#include <objc/runtime.h>

namespace vantor::darwin {
namespace {

SEL selector(std::string_view name) { return NSSelectorFromString(nsString(name)); }

/// Sends a message whose selector is known by name only. Its methods follow the usual convention:
/// what they return is not the caller's to release.
id send(id receiver, SEL selector, id argument) {
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Warc-performSelector-leaks"
    return [receiver performSelector:selector withObject:argument];
#pragma clang diagnostic pop
}

class NativeClass : public ObjectClass {
  public:
    explicit NativeClass(Class native) : native_(native), name_(class_getName(native)) {}

    Class native() const { return native_; }
    const std::string& name() const override { return name_; }

    bool isObjectSubclass() const override {
        Class candidate = native_;
        while (candidate != nil && candidate != [NSObject class]) {
            candidate = class_getSuperclass(candidate);
        }
        return candidate != nil;
    }
    bool respondsTo(std::string_view classMethod) const override {
        return [static_cast<id>(native_) respondsToSelector:selector(classMethod)];
    }
    ObjectRef perform(std::string_view classMethod,
                      const PropertyListDictionary& argument) const override {
        return respondsTo(classMethod)
                   ? wrap(nativeRef(send(native_, selector(classMethod),
                                         foundationGraph(PropertyList(argument)))))
                   : nullptr;
    }
    ObjectRef decodeInstance(KeyedDecoder& decoder) const override {
        decoder.failWithError(
            cocoaError(kCoderInvalidValue, "the class " + name_ + " reads the system's archives"));
        return nullptr;
    }

  private:
    Class native_;
    std::string name_;
};

class NativeObject : public Object, public NativeHolder {
  public:
    explicit NativeObject(NativeRef object) : native_(std::move(object)) {}

    const NativeRef& native() const override { return native_; }
    const ObjectClass& objectClass() const override { return classOf(native_); }
    ReflectedRef reflect() const override { return darwin::reflect(native_.get()); }

    std::optional<std::string> asString() const override {
        id object = darwin::native<id>(native_);
        return [object isKindOfClass:[NSString class]] ? std::optional(stdString(object))
                                                       : std::nullopt;
    }
    std::string description() const override {
        return stdString([darwin::native<id>(native_) description]);
    }
    std::optional<PropertyList> valueForKey(std::string_view key) const override {
        @try {
            auto value = propertyListOf([darwin::native<id>(native_) valueForKey:nsString(key)]);
            return value ? std::optional(std::move(*value)) : std::nullopt;
        } @catch (NSException*) {
            // The system's answer for a key that the object does not have.
            return std::nullopt;
        }
    }
    bool perform(std::string_view method, const ObjectRef& argument) override {
        id object = darwin::native<id>(native_);
        if (![object respondsToSelector:selector(method)]) {
            return false;
        }
        send(object, selector(method), darwin::native<id>(unwrap(argument)));
        return true;
    }

  private:
    NativeRef native_;
};

} // namespace

const ObjectClass* DarwinObjectRuntime::classNamed(std::string_view name) const {
    Class found = objc_getClass(std::string(name).c_str());
    return found != nil ? &objectClass((__bridge const void*)found) : nullptr;
}

const ObjectClass& objectClass(const void* nativeClass) {
    // Classes live as long as the process.
    static auto& lock = *new std::mutex;
    static auto& classes = *new std::map<const void*, NativeClass>;
    const std::scoped_lock guard(lock);
    return classes.try_emplace(nativeClass, (__bridge Class)nativeClass).first->second;
}

const ObjectClass& classOf(const NativeRef& object) {
    return objectClass((__bridge const void*)[native<id>(object) class]);
}

const void* nativeClass(const ObjectClass& objectClass) {
    return (__bridge const void*)dynamic_cast<const NativeClass&>(objectClass).native();
}

ObjectRef wrap(NativeRef object) {
    return object ? std::make_shared<NativeObject>(std::move(object)) : nullptr;
}

NativeRef unwrap(const ObjectRef& object) {
    const auto* holder = dynamic_cast<const NativeHolder*>(object.get());
    return holder != nullptr ? holder->native() : NativeRef();
}

} // namespace vantor::darwin
