#pragma once
// How a framework's classes become known to the runtime of the process that loaded it.

#include "platform/object_runtime.h"

namespace vantor {

/// Takes classes while a framework is being loaded. The classes live as long as the process.
class ClassRegistrar {
  public:
    virtual ~ClassRegistrar() = default;
    /// A class whose name is already known is not registered again.
    virtual void registerClass(const ObjectClass& objectClass) = 0;
};

/// The function that a framework's shared object exports under this name; the loader calls it once.
inline constexpr const char* kRegisterClassesSymbol = "VantorRegisterFrameworkClasses";
using RegisterClassesFunction = void (*)(ClassRegistrar*);

} // namespace vantor
