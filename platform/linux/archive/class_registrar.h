#pragma once
// How a framework on Linux makes its classes known. After loading a framework's shared object the
// loader calls its exported function `VantorRegisterFrameworkClasses` with a registrar.
//
// A framework contains its own copy of the seam's code, so what crosses here is called through
// virtual functions only, never cast to a derived class.

#include "platform/object_runtime.h"

namespace vantor {

class ClassRegistrar {
  public:
    virtual ~ClassRegistrar() = default;

    /// Makes a class known under its name. The class must live as long as the process (or, in
    /// tests, as the registrar). False when the name is taken; the class known before stays.
    virtual bool registerClass(const ObjectClass& objectClass) = 0;
};

inline constexpr const char* kRegisterFrameworkClassesSymbol = "VantorRegisterFrameworkClasses";

extern "C" {
using RegisterFrameworkClasses = void (*)(ClassRegistrar* registrar);
}

} // namespace vantor
