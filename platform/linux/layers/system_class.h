#pragma once
// A class of the system that is neither archived nor sent class methods.

#include "platform/object_runtime.h"

namespace vantor {

class SystemClass : public ObjectClass {
  public:
    explicit SystemClass(std::string name) : name_(std::move(name)) {}

    const std::string& name() const override { return name_; }
    bool isObjectSubclass() const override { return true; }
    bool respondsTo(std::string_view) const override { return false; }
    ObjectRef perform(std::string_view, const PropertyListDictionary&) const override {
        return nullptr;
    }
    ObjectRef decodeInstance(KeyedDecoder&) const override { return nullptr; }

  private:
    std::string name_;
};

} // namespace vantor
