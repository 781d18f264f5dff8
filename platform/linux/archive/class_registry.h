#pragma once
// The object runtime on Linux: a table of classes by name. The platform's plain classes (NSString,
// NSNumber, NSData, NSArray, NSDictionary, NSURL, NSError) are there from the start; others are
// registered by whoever implements them. Any thread.

#include "platform/linux/archive/class_registrar.h"

#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace vantor {

class ClassRegistry final : public ObjectRuntime, public ClassRegistrar {
  public:
    ClassRegistry();
    ~ClassRegistry() override;
    ClassRegistry(const ClassRegistry&) = delete;
    ClassRegistry& operator=(const ClassRegistry&) = delete;

    const ObjectClass* classNamed(std::string_view name) const override;
    bool registerClass(const ObjectClass& objectClass) override;

  private:
    const std::vector<std::unique_ptr<const ObjectClass>> plainClasses_;
    /// Guards classes_. Never held while a class is called, but for its name.
    mutable std::mutex mutex_;
    std::map<std::string, const ObjectClass*, std::less<>> classes_;
};

} // namespace vantor
