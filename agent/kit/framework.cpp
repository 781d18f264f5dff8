// The framework's one exported function; the loader calls it after loading the shared object.

#include "agent/kit/kit_classes.h"

extern "C" [[gnu::visibility("default")]] void
VantorRegisterFrameworkClasses(vantor::ClassRegistrar* registrar) {
    vantor::agent::registerKitClasses(*registrar);
}
