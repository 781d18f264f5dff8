#pragma once
// The agent's fifteen classes. Each archives one payload under the name of the payload's type and
// shows it to a reflection as one labelled child.

#include "platform/linux/archive/class_registrar.h"

#include <string_view>

namespace vantor::agent {

/// The class of that name, or null. Lives as long as the process.
const ObjectClass* kitClass(std::string_view name);

/// An instance around a payload; null when the payload does not fit the class.
ObjectRef makeKitObject(std::string_view className, PropertyList payload);

/// What an object of one of the classes carries, which fits its type; null for any other object.
const PropertyList* kitPayload(const Object& object);

/// Makes all fifteen known to a runtime.
void registerKitClasses(ClassRegistrar& registrar);

} // namespace vantor::agent
