#pragma once
// The class "CAContext": remote layer contexts as the core finds them, by name.

#include "platform/object_runtime.h"

namespace vantor {

class LinuxLayers;

/// Answers "remoteContextWithOptions:" with a new context of `layers`. Its instances have the
/// property "contextId" and the methods "setLayer:" (with a layer) and "invalidate".
class RemoteContextClass : public ObjectClass {
  public:
    explicit RemoteContextClass(LinuxLayers& layers) : layers_(layers) {}

    const std::string& name() const override;
    bool isObjectSubclass() const override { return true; }
    bool respondsTo(std::string_view classMethod) const override;
    ObjectRef perform(std::string_view classMethod,
                      const PropertyListDictionary& argument) const override;
    ObjectRef decodeInstance(KeyedDecoder&) const override { return nullptr; }

  private:
    LinuxLayers& layers_;
};

} // namespace vantor
