#include "platform/linux/layers/remote_context_class.h"

#include "platform/linux/layers/linux_layers.h"

namespace vantor {
namespace {

constexpr std::string_view kMakeMethod = "remoteContextWithOptions:";

class RemoteContextObject : public Object {
  public:
    RemoteContextObject(const ObjectClass& objectClass, LinuxLayers& layers)
        : class_(objectClass), layers_(layers), contextID_(layers.addContext()) {}
    ~RemoteContextObject() override { layers_.removeContext(contextID_); }
    RemoteContextObject(const RemoteContextObject&) = delete;
    RemoteContextObject& operator=(const RemoteContextObject&) = delete;

    const ObjectClass& objectClass() const override { return class_; }

    std::optional<PropertyList> valueForKey(std::string_view key) const override {
        return key == "contextId" ? std::optional(PropertyList(contextID_)) : std::nullopt;
    }

    bool perform(std::string_view method, const ObjectRef& argument) override {
        if (method == "setLayer:") {
            layers_.setRoot(contextID_, std::dynamic_pointer_cast<LinuxLayer>(argument));
            return true;
        }
        if (method == "invalidate") {
            layers_.removeContext(contextID_);
            return true;
        }
        return false;
    }

  private:
    const ObjectClass& class_;
    LinuxLayers& layers_;
    std::uint32_t contextID_;
};

} // namespace

const std::string& RemoteContextClass::name() const {
    static const std::string name = "CAContext";
    return name;
}

bool RemoteContextClass::respondsTo(std::string_view classMethod) const {
    return classMethod == kMakeMethod;
}

ObjectRef RemoteContextClass::perform(std::string_view classMethod,
                                      const PropertyListDictionary&) const {
    return respondsTo(classMethod) ? std::make_shared<RemoteContextObject>(*this, layers_)
                                   : nullptr;
}

} // namespace vantor
