#include "platform/linux/archive/class_registry.h"

#include "platform/linux/archive/plain_object.h"

namespace vantor {
namespace {

std::vector<std::unique_ptr<const ObjectClass>> makePlainClasses() {
    std::vector<std::unique_ptr<const ObjectClass>> classes;
    classes.reserve(kPlainClassNames.size());
    for (const std::string_view name : kPlainClassNames) {
        classes.push_back(makePlainClass(name));
    }
    return classes;
}

} // namespace

ClassRegistry::ClassRegistry() : plainClasses_(makePlainClasses()) {
    for (const auto& plain : plainClasses_) {
        classes_.emplace(plain->name(), plain.get());
    }
}

ClassRegistry::~ClassRegistry() = default;

const ObjectClass* ClassRegistry::classNamed(std::string_view name) const {
    const std::lock_guard lock(mutex_);
    const auto it = classes_.find(name);
    return it == classes_.end() ? nullptr : it->second;
}

bool ClassRegistry::registerClass(const ObjectClass& objectClass) {
    const std::lock_guard lock(mutex_);
    return classes_.emplace(objectClass.name(), &objectClass).second;
}

} // namespace vantor
