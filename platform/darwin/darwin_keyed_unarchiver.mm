#include "platform/darwin/darwin_object_runtime.h"
#include "platform/darwin/darwin_system.h"
#include "platform/darwin/foundation.h"

namespace vantor::darwin {
namespace {

static_assert(static_cast<int>(DecodingFailurePolicy::raiseException) ==
              NSDecodingFailurePolicyRaiseException);
static_assert(static_cast<int>(DecodingFailurePolicy::setErrorAndReturn) ==
              NSDecodingFailurePolicySetErrorAndReturn);

class Unarchiver : public KeyedUnarchiver {
  public:
    explicit Unarchiver(NSKeyedUnarchiver* unarchiver) : unarchiver_(unarchiver) {}

    void setDecodingFailurePolicy(DecodingFailurePolicy policy) override {
        unarchiver_.decodingFailurePolicy = static_cast<NSDecodingFailurePolicy>(policy);
    }
    void setClass(const ObjectClass& objectClass, std::string_view archivedName) override {
        [unarchiver_ setClass:(__bridge Class)nativeClass(objectClass)
                 forClassName:nsString(archivedName)];
    }
    ObjectRef decodeRootObject(std::span<const ObjectClass* const> allowed) override {
        NSMutableSet* classes = [NSMutableSet setWithCapacity:allowed.size()];
        for (const ObjectClass* objectClass : allowed) {
            [classes addObject:(__bridge Class)nativeClass(*objectClass)];
        }
        return wrap(nativeRef([unarchiver_ decodeObjectOfClasses:classes
                                                          forKey:NSKeyedArchiveRootObjectKey]));
    }
    std::optional<Error> error() const override {
        NSError* error = unarchiver_.error;
        return error != nil ? std::optional(errorOf(error)) : std::nullopt;
    }
    void finishDecoding() override { [unarchiver_ finishDecoding]; }

  private:
    NSKeyedUnarchiver* unarchiver_;
};

} // namespace

Result<std::unique_ptr<KeyedUnarchiver>>
DarwinKeyedArchiving::unarchiver(std::span<const std::uint8_t> archive) {
    NSError* error = nil;
    NSKeyedUnarchiver* unarchiver =
        [[NSKeyedUnarchiver alloc] initForReadingFromData:nsData(archive) error:&error];
    if (unarchiver == nil) {
        return Failure{errorOf(error)};
    }
    return std::unique_ptr<KeyedUnarchiver>(std::make_unique<Unarchiver>(unarchiver));
}

} // namespace vantor::darwin
