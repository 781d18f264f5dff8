#include "tests/support/fake_objects.h"

#include <algorithm>

namespace vantor {

ReflectedRef FakeReflected::leaf(View view) {
    auto made = std::make_shared<FakeReflected>();
    made->view_ = std::move(view);
    return made;
}

ReflectedRef FakeReflected::tree(std::vector<std::pair<std::string, ReflectedRef>> children) {
    auto made = std::make_shared<FakeReflected>();
    for (auto& [label, value] : children) {
        made->children_.push_back(
            {.label = label.empty() ? std::nullopt : std::optional(std::move(label)),
             .value = std::move(value)});
    }
    return made;
}

std::optional<std::string> FakeReflected::asFileURL() const {
    const auto* url = std::get_if<FileURL>(&view_);
    return url != nullptr ? std::optional(url->text) : std::nullopt;
}

std::string FakeReflected::description() const {
    if (const auto* text = std::get_if<std::string>(&view_)) {
        return *text;
    }
    if (const auto* enumeration = std::get_if<EnumerationCase>(&view_)) {
        return enumeration->name;
    }
    return "<reflected value>";
}

ObjectRef FakeObjectClass::perform(std::string_view classMethod,
                                   const PropertyListDictionary& argument) const {
    const auto method = classMethods.find(classMethod);
    return method != classMethods.end() ? method->second(argument) : nullptr;
}

ObjectRef FakeObjectClass::decodeInstance(KeyedDecoder& decoder) const {
    auto payload = decoder.decodeEncodable(payloadKey);
    if (!payload) {
        decoder.failWithError({.domain = "FakeObjectClass",
                               .code = 4865,
                               .message = "no value for the key \"" + payloadKey + "\""});
        return nullptr;
    }
    auto instance = std::make_shared<FakeObject>(*this);
    instance->payload = std::move(payload);
    return instance;
}

ReflectedRef FakeObject::reflect() const { return reflection ? reflection : Object::reflect(); }

std::string FakeObject::description() const { return text.value_or(Object::description()); }

std::optional<PropertyList> FakeObject::valueForKey(std::string_view key) const {
    const auto found = values.find(key);
    return found != values.end() ? std::optional(found->second) : std::nullopt;
}

bool FakeObject::perform(std::string_view method, const ObjectRef& argument) {
    sent.emplace_back(method, argument);
    return std::find(methods.begin(), methods.end(), method) != methods.end();
}

std::size_t FakeObject::count(std::string_view method) const {
    return static_cast<std::size_t>(std::count_if(
        sent.begin(), sent.end(), [&](const auto& entry) { return entry.first == method; }));
}

FakeRemoteContextClass::FakeRemoteContextClass() : FakeObjectClass("CAContext") {
    classMethods["remoteContextWithOptions:"] =
        [this](const PropertyListDictionary& given) -> ObjectRef {
        if (refuses) {
            return nullptr;
        }
        auto context = std::make_shared<FakeObject>(*this);
        context->methods = {"setLayer:", "invalidate"};
        context->values.emplace("contextId", PropertyList(nextID++));
        contexts.push_back(context);
        options.push_back(given);
        return context;
    };
}

} // namespace vantor
